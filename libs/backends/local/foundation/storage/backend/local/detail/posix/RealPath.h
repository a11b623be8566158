#pragma once

#include <foundation/storage/provider/StorageIRI.h>

#include <string>

namespace foundation::storage::backend::local::detail {

/// The path without links and dots (realpath(3)). Throws `Exception` with `location` where nothing is at `path`.
std::string realPath(const provider::StorageIRI& location, const std::string& path);

}  // namespace foundation::storage::backend::local::detail
