#pragma once

#include <foundation/storage/backend/local/detail/posix/FileSystem.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::local::detail {

/// Removes the folder at `path` with all that is in it, of any depth. No link is followed, not even one that is put in
/// the place of a folder meanwhile: what it leads to stays.
///
/// Throws `Exception` with the location of the entry that cannot be removed; what comes before it is gone then.
/// @param location  of the folder, which failures' locations begin with
void removeFolderTree(const FileSystem& files, const provider::StorageIRI& location, const std::string& path);

}  // namespace foundation::storage::backend::local::detail
