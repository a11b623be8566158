#pragma once

#include <foundation/storage/backend/local/detail/posix/Configuration.h>
#include <foundation/storage/backend/local/detail/posix/Rename.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::local::detail {

/// Moves an entry to another file system: copies it under a scratch name beside the destination, renames that, and
/// removes the source, with durability once all that is on the disk. Throws as `moveEntry`. A program that is killed
/// meanwhile leaves the scratch entry, or both. A file that is written to meanwhile is left where it was, too, with
/// `ResourceInUse`; of a folder what others put into it meanwhile goes with it.
///
/// To the system two mounts of one file system are two. Through them the destination can be the source, to which
/// nothing is done then; a second name of the same file is refused with `UnsupportedOperation`.
void moveAcross(const Configuration& configuration, const provider::StorageIRI& source,
                const provider::StorageIRI& destination, provider::ReplacementPolicy policy, MovedEntry kind);

}  // namespace foundation::storage::backend::local::detail
