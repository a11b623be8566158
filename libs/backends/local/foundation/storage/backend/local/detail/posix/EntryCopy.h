#pragma once

#include <foundation/storage/backend/local/detail/posix/FileSystem.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::local::detail {

/// Copies an entry to where there is none, as a rename would have it: a folder with all that is in it, links, pipes
/// and devices as what they are, with modes, times, extended attributes and, as far as this program may give them,
/// owners. Holes stay holes. Several names of one file become several files.
///
/// Throws `Exception` with the location at fault; what was copied stays. Needs three descriptors for each folder on the
/// way down.
void copyEntry(const Place& from, const provider::StorageIRI& source, const Place& to,
               const provider::StorageIRI& destination);

}  // namespace foundation::storage::backend::local::detail
