#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// What to do where the destination of a copy or move exists. The number 3 is not used.
enum class ReplacementPolicy : std::int32_t {
  Preserve = 0,   ///< keep it: fail with `ErrorCode::ResourceAlreadyExists`
  Overwrite = 1,  ///< replace it
  Clobber = 2,    ///< replace it
  NoClobber = 4,  ///< keep it: fail with `ErrorCode::ResourceAlreadyExists`
};

/// Whether `policy` forbids replacing what exists.
constexpr bool preservesExisting(ReplacementPolicy policy) {
  return policy == ReplacementPolicy::Preserve || policy == ReplacementPolicy::NoClobber;
}

/// Writes "ReplacementPolicy::Preserve" and the like; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, ReplacementPolicy policy);

}  // namespace foundation::storage::provider
