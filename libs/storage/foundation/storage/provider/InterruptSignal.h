#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <functional>
#include <iosfwd>

namespace foundation::storage::provider {

/// What a caller answers when a long copy asks whether to go on.
enum class InterruptSignal : std::int32_t {
  Continue = 0,
  Abort = 1,
};

/// Writes "InterruptSignal::Continue" and the like; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const InterruptSignal& signal);

/// Asked between the steps of a long copy; answers whether to go on.
using InterruptCallback = std::function<InterruptSignal()>;

}  // namespace foundation::storage::provider
