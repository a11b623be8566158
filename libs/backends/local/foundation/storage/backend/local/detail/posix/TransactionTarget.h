#pragma once

#include <foundation/storage/backend/local/detail/posix/FileSystem.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace foundation::storage::backend::local::detail {

/// A file that is there already, as far as a new file in its place is to be like it.
struct Replaced {
  struct stat status;
  std::vector<std::string> attributes;  ///< the names of its extended attributes
};

/// The file that a transaction will replace.
struct TransactionTarget {
  provider::StorageIRI location;     ///< of the file itself; where a link leads to it, without links and dots
  std::string path;                  ///< the same in the system's bytes
  std::optional<Replaced> replaced;  ///< if it exists
};

/// The file that a transaction at `location` is about: the one there, or, where a link is there, the one that
/// it leads to in the end, whether that exists or not.
///
/// Throws `Exception` with `location`: `InvalidLocation` for anything but a regular file, and for links that
/// lead in a circle, that could only lead to a folder, or to a file that has no name any more (proc(5)),
/// `ResourceNotFound` where a link leads into a folder that does not exist, and what the system says where it cannot be
/// found out.
TransactionTarget findTransactionTarget(const FileSystem& files, const provider::StorageIRI& location);

}  // namespace foundation::storage::backend::local::detail
