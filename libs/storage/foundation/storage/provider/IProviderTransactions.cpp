// Transactions for every provider: what is written goes to a scratch file beside the target, and one move
// publishes it.

#include <foundation/storage/provider/IProvider.h>

#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/GenericTransactionalStream.h>
#include <foundation/storage/provider/SafeByteStream.h>
#include <foundation/storage/provider/ScratchFiles.h>

namespace foundation::storage::provider {

std::unique_ptr<TransactionalStream> IProvider::doOpenTransactionalStream(const StorageIRI& location,
                                                                          const ByteStreamOpenOptions& options) const {
  if (!location.hasParent() || !location.hasPath())
    throw Exception(ErrorCode::InvalidLocation, location);
  const auto parent = location.getParent();
  return doOpenTransactionalStreamAtScratchLocation(location, StorageIRI(parent, makeScratchName()), options);
}

std::unique_ptr<TransactionalStream> IProvider::doOpenTransactionalStreamAtScratchLocation(
    const StorageIRI& location, const StorageIRI& scratchLocation, const ByteStreamOpenOptions& options) const {
  const bool readable = options.access == ByteStreamAccess::ReadWrite;
  std::function<void(const StreamClosePolicy&)> finish = [this, scratchLocation,
                                                          location](const StreamClosePolicy& policy) {
    if (policy == StreamClosePolicy::Commit)
      doMoveFile(scratchLocation, location, ReplacementPolicy::Overwrite);
    else
      doRemoveFile(scratchLocation);
  };
  auto scratch = doOpenStream(scratchLocation, options);
  try {
    auto stream = std::make_shared<SafeByteStream>(std::move(scratch), readable, true);
    return std::make_unique<GenericTransactionalStream<ByteStream>>(std::move(stream), std::move(finish));
  } catch (...) {  // no memory: nobody will ever close what was opened
    scratch.reset();
    doRemoveFile(scratchLocation);
    throw;
  }
}

}  // namespace foundation::storage::provider
