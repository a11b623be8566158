#pragma once

#include <foundation/storage/provider/StorageIRI.h>

#include <string>

namespace foundation::storage::backend::local::detail {

/// Throws `Exception` with `InvalidLocation` unless `location` is a path of this machine's file system:
/// scheme `file`, no host but localhost, no query or fragment, absolute, no drive.
void requireLocal(const provider::StorageIRI& location);

/// The path as the system takes it: absolute, its own bytes, without a '/' at the end (a name means the
/// same with and without it). Throws as `requireLocal`, and for a path that holds a NUL.
std::string nativePath(const provider::StorageIRI& location);

/// The location of a path of the system's, which is absolute.
/// @param like  gives the scheme
provider::StorageIRI toLocation(const provider::StorageIRI& like, const std::string& path);

/// The folder that holds the entry at `path`, with the '/' at its end.
std::string folderOf(const std::string& path);

/// `path` as a name: "/" stays as it is.
std::string withoutTrailingSlashes(std::string path);

}  // namespace foundation::storage::backend::local::detail
