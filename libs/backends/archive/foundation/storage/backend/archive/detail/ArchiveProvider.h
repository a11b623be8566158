#pragma once

#include <foundation/storage/backend/archive/detail/Archive.h>
#include <foundation/storage/backend/support/ListingProvider.h>
#include <foundation/storage/provider/IConfigurableProvider.h>
#include <foundation/storage/provider/extensions/IFileIdentity.h>
#include <foundation/storage/provider/extensions/IFlushableFilesystem.h>
#include <foundation/storage/provider/extensions/IInvalidatable.h>

#include <memory>

namespace foundation::storage::backend::archive::detail {

/// What one archive holds; `ArchiveProviderFactory` says how it behaves.
class ArchiveProvider final : public support::ListingProvider<provider::IConfigurableProvider>,
                              public provider::extensions::IFlushableFilesystem,
                              public provider::extensions::IInvalidatable,
                              public provider::extensions::IFileIdentity {
 public:
  explicit ArchiveProvider(std::shared_ptr<Archive> archive) : archive_(std::move(archive)) {}
  ~ArchiveProvider() override { endChangePolling(); }

 private:
  using StorageIRI = provider::StorageIRI;
  using ReplacementPolicy = provider::ReplacementPolicy;

  void doCreateFile(const StorageIRI& location) const override;
  void doCreateFolder(const StorageIRI& location) const override;
  /// Makes the archive, too, where it is not there.
  void doCreateFolderRecursive(const StorageIRI& location) const override;
  bool doFileExists(const StorageIRI& location) const override;
  bool doFolderExists(const StorageIRI& location) const override;
  void doRemoveFile(const StorageIRI& location) const override;
  void doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                  const ReplacementPolicy& policy) const override;
  void doRemoveFolder(const StorageIRI& location) const override;
  void doRemoveFolderRecursively(const StorageIRI& location) const override;
  void doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                    const ReplacementPolicy& policy) const override;
  provider::FileAttributes doGetFileAttributes(const StorageIRI& location) const override;
  provider::FolderAttributes doGetFolderAttributes(const StorageIRI& location) const override;
  std::unique_ptr<provider::ByteStream> doOpenStream(const StorageIRI& location,
                                                     const provider::ByteStreamOpenOptions& options) const override;
  std::unique_ptr<provider::ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const override;
  /// Refuses a target that is not writable, as a plain stream does, and a folder.
  std::unique_ptr<provider::TransactionalStream> doOpenTransactionalStream(
      const StorageIRI& location, const provider::ByteStreamOpenOptions& options) const override;
  Listing list(const StorageIRI& location, const support::ListingScope& scope) const override;
  void doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                  const ReplacementPolicy& policy) const override;
  provider::TransactionStatus doCopyFileAtomic(const StorageIRI& source, const StorageIRI& destination,
                                               const ReplacementPolicy& policy,
                                               const provider::InterruptCallback& interruptCallback) const override;
  /// Throws `UnsupportedOperation` for what is no point in time.
  void doSetLastModified(const StorageIRI& location, const boost::posix_time::ptime& time) const override;
  void doSetWritable(const StorageIRI& location, bool writable) const override;
  bool doHasFeature(const provider::ExtendedFeature& feature) const override;
  StorageIRI doGetCanonicalLocation(const StorageIRI& location) const override;
  void doShutdown() override { archive_->close(); }
  provider::ExistenceType doExists(const StorageIRI& location) const override;
  provider::ExistenceTypeExtended doExistsExtended(const StorageIRI& location) const override;
  provider::ProviderStorageInfo doGetProviderStorageInfo(const StorageIRI& location) const override;
  void doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const override;
  void doConfigure(boost::property_tree::ptree configuration) override;

  void doFlushFilesystem() override { archive_->flush(); }
  /// Of the whole archive, whatever the location.
  void doInvalidate(const StorageIRI& location) override;
  /// A file of the same name that another provider serves is another one: writing to it leaves this one as it is until
  /// the archive is written.
  std::u16string doGetFileIdentity(const StorageIRI& location) const override;

  /// Throws `Exception` with `InvalidLocation` for what is no place in this archive.
  Place place(const StorageIRI& location) const;

  /// Kept by streams and listings, too, which may outlive the provider.
  const std::shared_ptr<Archive> archive_;
};

}  // namespace foundation::storage::backend::archive::detail
