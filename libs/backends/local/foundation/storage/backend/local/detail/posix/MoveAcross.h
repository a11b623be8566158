#pragma once

#include <foundation/storage/backend/local/detail/posix/FileSystem.h>
#include <foundation/storage/backend/local/detail/posix/Rename.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::local::detail {

/// Moves an entry to another file system: copies it under a scratch name beside the destination, renames that, and
/// removes the source. Throws as `moveEntry`. A program that is killed meanwhile leaves the scratch entry, or both.
void moveAcross(const FileSystem& files, const provider::StorageIRI& source, const provider::StorageIRI& destination,
                provider::ReplacementPolicy policy, MovedEntry kind);

}  // namespace foundation::storage::backend::local::detail
