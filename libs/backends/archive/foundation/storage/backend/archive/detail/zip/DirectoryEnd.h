#pragma once

#include <foundation/storage/backend/archive/detail/Container.h>

#include <cstdint>
#include <string>

namespace foundation::storage::backend::archive::detail::zip {

/// What the end of an archive says of its directory.
struct DirectoryEnd {
  std::uint64_t position = 0;  ///< of the directory in the file, in bytes
  std::uint64_t size = 0;      ///< of the directory, in bytes
  std::uint64_t count = 0;     ///< of its records
  bool isCountWhole = true;    ///< else it is what is left of it in 16 bits: many programs do not write zip64
  std::uint64_t base = 0;      ///< to be added to positions in records: what was put before the archive
  std::string comment;         ///< the archive's
};

/// Looks for the end. Throws `Fault` where there is none, or where it leads to no directory.
DirectoryEnd findDirectoryEnd(Input& input);

}  // namespace foundation::storage::backend::archive::detail::zip
