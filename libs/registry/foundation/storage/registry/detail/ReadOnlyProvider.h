#pragma once

#include <foundation/storage/provider/IReadOnlyProvider.h>
#include <foundation/storage/provider/extensions/IFileIdentity.h>
#include <foundation/storage/provider/extensions/IFlushableFilesystem.h>
#include <foundation/storage/provider/extensions/IInvalidatable.h>

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace foundation::storage::registry::detail {

/// The view of another provider that `ReadOnlyFilter` describes.
class ReadOnlyProvider final : public provider::IReadOnlyProvider,
                               public provider::extensions::IFileIdentity,
                               public provider::extensions::IFlushableFilesystem,
                               public provider::extensions::IInvalidatable {
 public:
  /// @param prefix  as registered
  ReadOnlyProvider(std::shared_ptr<provider::IProvider> inner, std::u16string prefix);
  ~ReadOnlyProvider() override;

 private:
  using StorageIRI = provider::StorageIRI;
  using Kinds = std::vector<events::Kind>;
  using ListOperation = Listing (provider::IProvider::*)(const StorageIRI&, std::u16string) const;

  bool doFileExists(const StorageIRI& location) const override;
  bool doFolderExists(const StorageIRI& location) const override;
  provider::ExistenceType doExists(const StorageIRI& location) const override;
  provider::ExistenceTypeExtended doExistsExtended(const StorageIRI& location) const override;
  provider::FileAttributes doGetFileAttributes(const StorageIRI& location) const override;
  provider::FolderAttributes doGetFolderAttributes(const StorageIRI& location) const override;
  provider::ExtendedAttributes doGetExtendedAttributes(const StorageIRI& location) const override;
  provider::PathComparator doGetPathComparator(const StorageIRI& location) const override;
  provider::FilenameSensitivity doGetFilenameSensitivity(const StorageIRI& location) const override;
  provider::ProviderStorageInfo doGetProviderStorageInfo(const StorageIRI& location) const override;
  provider::ProviderCacheUsage doGetProviderCacheUsage(const StorageIRI& location) const override;
  StorageIRI doGetCanonicalLocation(const StorageIRI& location) const override;

  std::unique_ptr<provider::ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const override;
  // The base refuses these only when they come to write.
  std::unique_ptr<provider::TransactionalStream> doOpenTransactionalStream(
      const StorageIRI& location, const provider::ByteStreamOpenOptions& options) const override;
  std::unique_ptr<provider::TransactionalStream> doOpenTransactionalStreamAtScratchLocation(
      const StorageIRI& location, const StorageIRI& scratchLocation,
      const provider::ByteStreamOpenOptions& options) const override;
  provider::TransactionStatus doCopyFileAtomic(const StorageIRI& source, const StorageIRI& destination,
                                               const provider::ReplacementPolicy& policy,
                                               const provider::InterruptCallback& interruptCallback) const override;

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

  void doPublishFolderEventsFor(const StorageIRI& location, const provider::ChangeCallback& callback,
                                const Kinds& kinds, provider::RecursiveFileWatching recursion) const override;
  void doPublishFileEventsFor(const StorageIRI& location, const provider::ChangeCallback& callback,
                              const Kinds& kinds) const override;
  void doStopPublishingEventsFor(const StorageIRI& location) const override;

  /// Ends what was begun here; the inner provider goes on for others.
  void doShutdown() override;
  void doFlushFilesystem() override;
  void doInvalidate(const StorageIRI& location) override;
  /// Made of the inner provider and its canonical location where that does not tell its files apart.
  std::u16string doGetFileIdentity(const StorageIRI& location) const override;

  template <class Result>
  Result ask(Result (provider::IProvider::*operation)(const StorageIRI&) const, const StorageIRI& location) const;
  Listing list(ListOperation operation, const StorageIRI& location, std::u16string wildcard = {}) const;
  void notePublished(StorageIRI folder) const;
  void stopAllPublishing() const;

  std::shared_ptr<provider::IProvider> inner_;
  std::u16string prefix_;
  mutable std::mutex mutex_;                ///< guards the next; the inner provider is never called with it
  mutable std::set<StorageIRI> published_;  ///< the inner folders of subscriptions that may be in force
};

}  // namespace foundation::storage::registry::detail
