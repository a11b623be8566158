#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/IProvider.h>

namespace foundation::storage::provider {

/// Base of providers whose store cannot be written to: every operation that would change it throws
/// `Exception` with `ErrorCode::ReadOnlyProvider` and the location (of two, the source). That includes
/// `openStream`, whatever its options; files are read with `openReadOnlyStream`.
class FOUNDATION_EXPORT IReadOnlyProvider : public IProvider {
 public:
  IReadOnlyProvider();
  ~IReadOnlyProvider() override;

 private:
  void doCreateFile(const StorageIRI& location) const override;
  void doCreateFolder(const StorageIRI& location) const override;
  void doCreateFolderRecursive(const StorageIRI& location) const override;
  void doRemoveFile(const StorageIRI& location) const override;
  void doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                  const ReplacementPolicy& policy) const override;
  void doRemoveFolder(const StorageIRI& location) const override;
  void doRemoveFolderRecursively(const StorageIRI& location) const override;
  void doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                    const ReplacementPolicy& policy) const override;
  std::unique_ptr<ByteStream> doOpenStream(const StorageIRI& location,
                                           const ByteStreamOpenOptions& options) const override;
  void doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                  const ReplacementPolicy& policy) const override;
  void doSetLastModified(const StorageIRI& location, const boost::posix_time::ptime& time) const override;
  void doSetWritable(const StorageIRI& location, bool writable) const override;
  void doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const override;
};

}  // namespace foundation::storage::provider
