#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// How a path comparator (`IProvider::getPathComparator`) treats upper and lower case.
enum class CaseModifier : std::int32_t {
  None = 0,         ///< as the store does at the comparator's location
  Sensitive = 1,    ///< code unit by code unit
  InSensitive = 2,  ///< after lower-casing both (`fl::i18n::to_lower`)
};

/// Writes "CaseModifier::Sensitive" and the like; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, CaseModifier modifier);

}  // namespace foundation::storage::provider
