#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// Whether a copy may show at its destination before it is whole.
enum class TransactionPolicy : std::int32_t {
  NonAtomic = 0,
  Atomic = 1,
};

/// How a copy that may be interrupted ended.
enum class TransactionStatus : std::int32_t {
  Completed = 0,
  Aborted = 1,
};

/// Writes "TransactionPolicy::Atomic" and the like; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const TransactionPolicy& policy);

/// Writes "TransactionStatus::Completed" and the like; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const TransactionStatus& status);

}  // namespace foundation::storage::provider
