#pragma once

#include <foundation/storage/backend/memory/detail/Tree.h>
#include <foundation/storage/backend/support/ListingProvider.h>
#include <foundation/storage/provider/IConfigurableProvider.h>
#include <foundation/storage/provider/extensions/IFileIdentity.h>

#include <memory>
#include <optional>
#include <string>

namespace foundation::storage::backend::memory::detail {

/// One store in memory; `MemoryProviderFactory` says how it behaves.
class MemoryProvider final : public support::ListingProvider<provider::IConfigurableProvider>,
                             public provider::extensions::IFileIdentity {
 public:
  /// @param root  as `rootOf` gives it
  explicit MemoryProvider(provider::StorageIRI root);
  ~MemoryProvider() override;

 private:
  using StorageIRI = provider::StorageIRI;
  using ReplacementPolicy = provider::ReplacementPolicy;

  void doCreateFile(const StorageIRI& location) const override;
  void doCreateFolder(const StorageIRI& location) const override;
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
  provider::ExistenceType doExists(const StorageIRI& location) const override;
  provider::ExistenceTypeExtended doExistsExtended(const StorageIRI& location) const override;
  provider::ProviderStorageInfo doGetProviderStorageInfo(const StorageIRI& location) const override;
  void doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const override;
  void doConfigure(boost::property_tree::ptree configuration) override;
  std::u16string doGetFileIdentity(const StorageIRI& location) const override;

  Place place(const StorageIRI& location) const { return placeIn(root_, location); }

  const StorageIRI root_;
  /// Kept by listings, too, which may outlive the provider.
  const std::shared_ptr<Tree> tree_ = std::make_shared<Tree>();
};

}  // namespace foundation::storage::backend::memory::detail
