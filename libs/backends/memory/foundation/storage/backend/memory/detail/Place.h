#pragma once

#include <foundation/storage/provider/StorageIRI.h>

#include <string>
#include <vector>

namespace foundation::storage::backend::memory::detail {

/// The root of the store that a location lies in. Throws `Exception` with `InvalidLocation` where no store in
/// memory has it.
provider::StorageIRI rootOf(const provider::StorageIRI& location);

/// A location as the names that lead to it; none for the root.
struct Place {
  provider::StorageIRI location;  ///< as the caller wrote it, for failures
  std::vector<std::u16string> names;
};

/// Throws `Exception` with `InvalidLocation` where the location is not in the store with that root.
Place placeIn(const provider::StorageIRI& root, const provider::StorageIRI& location);

}  // namespace foundation::storage::backend::memory::detail
