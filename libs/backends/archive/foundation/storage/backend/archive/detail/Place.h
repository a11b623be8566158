#pragma once

#include <foundation/storage/backend/archive/detail/EntryName.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::archive::detail {

/// A location as the names that lead to it from the archive's root; none for the root.
struct Place {
  provider::StorageIRI location;  ///< as the caller wrote it, for failures
  Names names;
};

/// Throws `Exception` with `InvalidLocation` for a location that is in no container, or that no archive can hold.
Place placeOf(const provider::StorageIRI& location);

}  // namespace foundation::storage::backend::archive::detail
