#pragma once

#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::local::detail {

/// Copies a file's content inside the kernel: by sharing blocks where the file system can
/// (ioctl_ficlone(2)), else by copy_file_range(2), else through a buffer.
///
/// A new destination gets the source's mode, less the umask. Throws `Exception` with the file at fault:
/// `ResourceAlreadyExists` where the policy keeps an existing destination, `InvalidLocation` where the
/// two are one file. What a failed copy has written stays.
void copyContent(const provider::StorageIRI& source, const provider::StorageIRI& destination,
                 provider::ReplacementPolicy policy);

}  // namespace foundation::storage::backend::local::detail
