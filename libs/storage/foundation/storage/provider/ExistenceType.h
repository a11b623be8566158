#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// What a location names.
enum class ExistenceType : std::int32_t {
  AsFile = 0,
  AsFolder = 1,
  AsNeither = 2,  ///< nothing is there
};

/// The same, told more exactly.
enum class ExistenceTypeExtended : std::int32_t {
  RegularFile = 0,
  SpecialFile = 1,  ///< neither a regular file nor a folder: a device, a pipe, a socket
  RegularFolder = 2,
  SymlinkToFile = 3,
  SymlinkToFolder = 4,
  BrokenSymlink = 5,  ///< a link whose target is missing
  None = 6,
};

/// Writes the bare name, such as "AsFile". Any other number writes nothing and sets the stream's failbit.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const ExistenceType& type);

/// Writes the bare name, such as "RegularFile"; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const ExistenceTypeExtended& type);

}  // namespace foundation::storage::provider
