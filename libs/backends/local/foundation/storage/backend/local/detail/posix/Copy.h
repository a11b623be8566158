#pragma once

#include <foundation/storage/backend/local/detail/posix/Configuration.h>
#include <foundation/storage/provider/InterruptSignal.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/StorageIRI.h>
#include <foundation/storage/provider/TransactionPolicy.h>

namespace foundation::storage::backend::local::detail {

/// Copies a file's content as `ContentCopy` does.
///
/// A new destination gets the source's mode, less the umask. Throws `Exception` with the file at fault:
/// `ResourceAlreadyExists` where the policy keeps an existing destination, `InvalidLocation` where the
/// two are one file. What a failed copy has written stays.
void copyFile(const FileSystem& files, const provider::StorageIRI& source, const provider::StorageIRI& destination,
              provider::ReplacementPolicy policy);

/// The same through a `Replacement`: until the copy is complete the destination is what it was. A replaced file's
/// permissions are kept.
provider::TransactionStatus copyFileAtomically(const Configuration& configuration, const provider::StorageIRI& source,
                                               const provider::StorageIRI& destination,
                                               provider::ReplacementPolicy policy,
                                               const provider::InterruptCallback& goOn);

}  // namespace foundation::storage::backend::local::detail
