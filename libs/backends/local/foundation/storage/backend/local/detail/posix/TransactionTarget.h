#pragma once

#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

/// Who may do what with a file, as far as a new file is to be given it.
struct Permissions {
  mode_t mode;  ///< at most 0777
  gid_t group;
  bool hasAccessList;  ///< (acl(5)) then the group's bits of the mode are not the group's
};

/// The file that a transaction will replace.
struct TransactionTarget {
  provider::StorageIRI location;           ///< of the file itself; where a link leads to it, without links and dots
  std::optional<Permissions> permissions;  ///< of the file, if it exists
};

/// The file that a transaction at `location` is about: the one there, or, where a link is there, the one that
/// it leads to in the end, whether that exists or not.
///
/// Throws `Exception` with `location`: `InvalidLocation` for anything but a regular file, and for links that
/// lead in a circle, that could only lead to a folder, or to a file that has no name any more (proc(5)),
/// `ResourceNotFound` where a link leads into a folder that does not exist, and what the system says where it cannot be
/// found out.
TransactionTarget findTransactionTarget(const provider::StorageIRI& location);

}  // namespace foundation::storage::backend::local::detail
