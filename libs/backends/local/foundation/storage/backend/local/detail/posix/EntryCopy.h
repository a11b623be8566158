#pragma once

#include <foundation/storage/backend/local/detail/posix/Configuration.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::local::detail {

/// Copies an entry to where there is none, as a rename would have it: a folder with all that is in it, links, pipes
/// and devices as what they are, with modes, times, users' attributes and access lists, as far as the other file
/// system has these, and owners, as far as this program may give them. Holes stay holes. Several names of one file
/// become several files.
///
/// With durability, files and folders are on the disk when it returns (fsync(2)).
///
/// Throws `Exception` with the location at fault, `InvalidLocation` where the copy would lie in the folder that is
/// copied; what was copied stays. Needs three descriptors for each folder on the way down.
/// @param source, destination  what failures are to name; the destination whatever the name is that it has for now
void copyEntry(const Configuration& configuration, const Place& from, const provider::StorageIRI& source,
               const Place& to, const provider::StorageIRI& destination);

}  // namespace foundation::storage::backend::local::detail
