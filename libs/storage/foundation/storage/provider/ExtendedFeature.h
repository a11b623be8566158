#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// What a provider may be able to do beyond the common; asked with `IProvider::hasFeature`. The
/// numbers 1 to 4 are not used.
enum class ExtendedFeature : std::int32_t {
  RecursiveFolderRemoval = 0,  ///< `removeFolderRecursively`
  AtomicFileCopy = 5,          ///< `copyFileAtomic`; it has no text form
};

/// Writes "ExtendedFeature::RecursiveFolderRemoval"; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, ExtendedFeature feature);

}  // namespace foundation::storage::provider
