#pragma once

#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <string>
#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

/// What is at `path`, links followed; nothing where nothing can be there. Throws `Exception` where that
/// cannot be found out, for want of permission for instance.
std::optional<struct stat> findStatus(const provider::StorageIRI& location, const std::string& path);

/// The same without following a link at the end.
std::optional<struct stat> findLinkStatus(const provider::StorageIRI& location, const std::string& path);

/// What is at `path`, links followed. Throws `Exception` where nothing is.
struct stat requireStatus(const provider::StorageIRI& location, const std::string& path);

}  // namespace foundation::storage::backend::local::detail
