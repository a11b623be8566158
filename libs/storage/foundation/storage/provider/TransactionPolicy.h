#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// Whether a copy may show at its destination before it is whole.
enum class TransactionPolicy : std::int32_t {
  NonAtomic = 0,  ///< it may, and a copy that fails or is interrupted may leave a part
  Atomic = 1,     ///< it does not: the destination is what it was, or whole
};

/// How a copy that may be interrupted ended.
enum class TransactionStatus : std::int32_t {
  Completed = 0,  ///< the destination is whole
  Aborted = 1,    ///< the callback ended it
};

/// Writes "TransactionPolicy::Atomic" and the like; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const TransactionPolicy& policy);

/// Writes "TransactionStatus::Completed" and the like; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const TransactionStatus& status);

}  // namespace foundation::storage::provider
