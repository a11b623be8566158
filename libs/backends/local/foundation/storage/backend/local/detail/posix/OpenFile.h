#pragma once

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>
#include <foundation/storage/backend/local/detail/posix/FileSystem.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

/// An open file and what it was when it was opened.
struct OpenFile {
  Descriptor descriptor;
  struct stat status;
};

/// Opens a file whose bytes can be read or written without waiting for somebody at the other end.
/// Throws `ByteStreamOpenFailure`; for a folder, a pipe or a socket with `InvalidLocation`.
/// @param flags  of open(2); close-on-exec is added
/// @param mode   of a new file, less the umask
OpenFile openFile(const FileSystem& files, const provider::StorageIRI& location, int flags, mode_t mode = 0666);

}  // namespace foundation::storage::backend::local::detail
