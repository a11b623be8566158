#pragma once

#include <foundation/storage/backend/local/detail/posix/FileSystem.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::local::detail {

/// Where the entry of a location is. Throws `Exception`.
/// @param call  the system call that it is for, which a failure names
Place requirePlace(const FileSystem& files, const provider::StorageIRI& location, const char* call);

/// What is at a location, links followed, for system calls that take nothing but a path. Throws `Exception`.
Reached requireReached(const FileSystem& files, const provider::StorageIRI& location);

}  // namespace foundation::storage::backend::local::detail
