#pragma once

#include <foundation/storage/backend/local/detail/posix/Configuration.h>
#include <foundation/storage/backend/local/detail/posix/Rename.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::local::detail {

/// Renames an entry; a link is renamed itself. To another file system it is copied beside the destination, renamed
/// there, and only then removed from where it was.
///
/// Throws `Exception` with the location at fault: for a source that is missing or of the other kind `source`, else
/// `destination`, or what is at fault in a tree that is copied. Then nothing has been moved, unless it is
/// a copy that cannot be made durable in the end, or its source that was changed meanwhile or cannot be removed: then
/// what is left of that is there as well as the destination.
void moveEntry(const Configuration& configuration, const provider::StorageIRI& source,
               const provider::StorageIRI& destination, provider::ReplacementPolicy policy, MovedEntry kind);

}  // namespace foundation::storage::backend::local::detail
