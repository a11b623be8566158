#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// How a path comparator (`IProvider::getPathComparator`) treats upper and lower case.
enum class CaseModifier : std::int32_t {
  None = 0,  ///< as `Sensitive`
  Sensitive = 1,
  InSensitive = 2,
};

/// Writes "CaseModifier::Sensitive" and the like; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, CaseModifier modifier);

}  // namespace foundation::storage::provider
