#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// What a caller answers when a long copy asks whether to go on.
enum class InterruptSignal : std::int32_t {
  Continue = 0,
  Abort = 1,
};

/// Writes "InterruptSignal::Continue" and the like; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const InterruptSignal& signal);

}  // namespace foundation::storage::provider
