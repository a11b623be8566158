#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <string>
#include <vector>

namespace foundation::storage::backend::support {

/// The names that lead from the root of a store to a location, dot segments resolved and empty segments left out; none
/// for the root.
FOUNDATION_EXPORT std::vector<std::u16string> pathNames(const provider::StorageIRI& location);

/// The names of a relative path, as recursive listings give it.
FOUNDATION_EXPORT std::vector<std::u16string> pathNames(std::u16string_view path);

}  // namespace foundation::storage::backend::support
