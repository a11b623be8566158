#pragma once

#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

/// The file that a transaction will replace.
struct TransactionTarget {
  provider::StorageIRI location;      ///< of the file itself; where a link leads to it, without links and dots
  std::optional<mode_t> permissions;  ///< (at most 0777) of the file, if it exists
};

/// The file that a transaction at `location` is about: the one there, or, where a link is there, the one that
/// it leads to in the end, whether that exists or not.
///
/// Throws `Exception` with `location`: `InvalidLocation` for anything but a regular file and for links that
/// lead in a circle, `ResourceNotFound` where a link leads into a folder that does not exist, and what the
/// system says where it cannot be found out.
TransactionTarget findTransactionTarget(const provider::StorageIRI& location);

}  // namespace foundation::storage::backend::local::detail
