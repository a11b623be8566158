#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// How a transactional stream ends.
enum class StreamClosePolicy : std::int32_t {
  Commit = 0,  ///< what was written takes the place of the target, in one step
  Abort = 1,   ///< what was written is thrown away
};

/// Writes "StreamClosePolicy::Commit" and the like; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const StreamClosePolicy& policy);

}  // namespace foundation::storage::provider
