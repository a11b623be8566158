#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/IConfigurableProvider.h>
#include <foundation/storage/provider/extensions/IFileIdentity.h>
#include <foundation/storage/provider/extensions/IFlushableFilesystem.h>
#include <foundation/storage/provider/extensions/IInvalidatable.h>
#include <foundation/storage/testing/Faults.h>

#include <memory>
#include <string>

namespace foundation::storage::testing {

/// A provider that does what another one does, until it is told to fail: for testing how a program, or what
/// a back end inherits, takes failures that real stores show once a year.
///
///     const auto faults = std::make_shared<Faults>();
///     const auto store = std::make_shared<FaultyProvider>(memory, faults);
///     faults->fail(Operation::Write, 2, ErrorCode::NoSpaceLeft);
///     EXPECT_THROW(save(StorageItem(store, location)), MyDiskIsFull);
///     EXPECT_EQ(faults->countOpenStreams(), 0u);
///
/// Every operation is the inner provider's own, also where that overrides a default, with two exceptions:
/// polling for changes is done by this provider, so that the poll's calls can fail, and where the inner
/// provider lacks an optional capability (`IConfigurableProvider` and the extensions), it is as if it did
/// nothing. Safe for several threads where the inner provider is.
class FOUNDATION_EXPORT FaultyProvider final : public provider::IConfigurableProvider,
                                               public provider::extensions::IFlushableFilesystem,
                                               public provider::extensions::IInvalidatable,
                                               public provider::extensions::IFileIdentity {
 public:
  /// @param inner   does the work
  /// @param faults  what is to fail; streams and listings keep it, too
  FaultyProvider(std::shared_ptr<provider::IProvider> inner, std::shared_ptr<Faults> faults);
  ~FaultyProvider() override;

 private:
  using StorageIRI = provider::StorageIRI;
  using ReplacementPolicy = provider::ReplacementPolicy;
  using ChangeCallback = provider::ChangeCallback;
  using Options = provider::ByteStreamOpenOptions;
  using Kinds = std::vector<events::Kind>;

  void doCreateFile(const StorageIRI& location) const override;
  void doCreateFolder(const StorageIRI& location) const override;
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
  std::unique_ptr<provider::ByteStream> doOpenStream(const StorageIRI& location, const Options& options) const override;
  std::unique_ptr<provider::ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const override;
  std::unique_ptr<provider::TransactionalStream> doOpenTransactionalStream(const StorageIRI& location,
                                                                           const Options& options) const override;
  Listing doListAll(const StorageIRI& location) const override;
  Listing doListAllWildcards(const StorageIRI& location, std::u16string wildcard) const override;
  Listing doListFiles(const StorageIRI& location) const override;
  Listing doListFilesWildcards(const StorageIRI& location, std::u16string wildcard) const override;
  Listing doListFolders(const StorageIRI& location) const override;
  Listing doListFoldersWildcards(const StorageIRI& location, std::u16string wildcard) const override;
  Listing doListAllNamesOnly(const StorageIRI& location) const override;
  Listing doListAllNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const override;
  Listing doListFoldersNamesOnly(const StorageIRI& location) const override;
  Listing doListFoldersNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const override;
  Listing doListFilesNamesOnly(const StorageIRI& location) const override;
  Listing doListFilesNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const override;
  Listing doListAllRecursive(const StorageIRI& location) const override;
  Listing doListAllRecursiveWildcards(const StorageIRI& location, std::u16string wildcard) const override;
  Listing doListAllRecursiveNamesOnly(const StorageIRI& location) const override;
  Listing doListAllRecursiveNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const override;
  void doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                  const ReplacementPolicy& policy) const override;
  provider::TransactionStatus doCopyFileAtomic(const StorageIRI& source, const StorageIRI& destination,
                                               const ReplacementPolicy& policy,
                                               const provider::InterruptCallback& interruptCallback) const override;
  void doSetLastModified(const StorageIRI& location, const boost::posix_time::ptime& time) const override;
  void doSetWritable(const StorageIRI& location, bool writable) const override;
  void doPublishFolderEventsFor(const StorageIRI& location, const ChangeCallback& callback, const Kinds& kinds,
                                provider::RecursiveFileWatching recursion) const override;
  void doPublishFileEventsFor(const StorageIRI& location, const ChangeCallback& callback,
                              const Kinds& kinds) const override;
  void doStopPublishingEventsFor(const StorageIRI& location) const override;
  bool doHasFeature(const provider::ExtendedFeature& feature) const override;
  provider::PathComparator doGetPathComparator(const StorageIRI& location) const override;
  StorageIRI doGetCanonicalLocation(const StorageIRI& location) const override;
  provider::FilenameSensitivity doGetFilenameSensitivity(const StorageIRI& location) const override;
  void doShutdown() override;
  provider::ExistenceType doExists(const StorageIRI& location) const override;
  provider::ExistenceTypeExtended doExistsExtended(const StorageIRI& location) const override;
  provider::ExtendedAttributes doGetExtendedAttributes(const StorageIRI& location) const override;
  provider::ProviderStorageInfo doGetProviderStorageInfo(const StorageIRI& location) const override;
  void doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const override;
  provider::ProviderCacheUsage doGetProviderCacheUsage(const StorageIRI& location) const override;

  void doConfigure(boost::property_tree::ptree configuration) override;
  void doFlushFilesystem() override;
  void doInvalidate(const StorageIRI& location) override;
  /// Made of the inner provider and the canonical location where that does not tell its files apart.
  std::u16string doGetFileIdentity(const StorageIRI& location) const override;

  using ListOperation = Listing (provider::IProvider::*)(const StorageIRI&, std::u16string) const;

  /// Calls the inner provider, unless that is to fail.
  template <class Call>
  auto run(Operation operation, const StorageIRI& location, const Call& call) const;
  Listing list(ListOperation operation, const StorageIRI& location, std::u16string wildcard = {}) const;

  std::shared_ptr<provider::IProvider> inner_;
  std::shared_ptr<Faults> faults_;
};

}  // namespace foundation::storage::testing
