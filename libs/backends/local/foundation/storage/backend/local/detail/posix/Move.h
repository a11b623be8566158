#pragma once

#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::local::detail {

enum class MovedEntry { File, Folder };

/// Renames an entry; a link is renamed itself. Throws `Exception` with the location at fault: for a source
/// that is missing or of the other kind `source`, else `destination`.
void moveEntry(const provider::StorageIRI& source, const provider::StorageIRI& destination,
               provider::ReplacementPolicy policy, MovedEntry kind);

}  // namespace foundation::storage::backend::local::detail
