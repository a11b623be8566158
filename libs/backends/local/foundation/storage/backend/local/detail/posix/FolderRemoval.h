#pragma once

#include <foundation/storage/backend/local/detail/posix/FileSystem.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::local::detail {

/// What becomes of folders that may not be changed.
enum class Obstacles {
  Respect,
  Remove,  ///< where this program may give itself the permission: for what it has made itself
};

/// Removes the folder at `path` with all that is in it, of any depth. No link is followed, not even one that is put in
/// the place of a folder meanwhile: what it leads to stays.
///
/// Throws `Exception` with the location of the entry that cannot be removed; what comes before it is gone then. The
/// root, and names that rmdir(2) refuses, are refused before anything is removed.
/// @param location  of the folder, which failures' locations begin with
void removeFolderTree(const FileSystem& files, const provider::StorageIRI& location, const std::string& path,
                      Obstacles obstacles = Obstacles::Respect);

}  // namespace foundation::storage::backend::local::detail
