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

}  // namespace foundation::storage::backend::local::detail
