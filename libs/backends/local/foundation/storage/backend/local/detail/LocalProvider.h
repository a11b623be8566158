#pragma once

#include <foundation/storage/backend/local/detail/posix/ChangeWatcher.h>
#include <foundation/storage/backend/local/detail/posix/Configuration.h>
#include <foundation/storage/provider/IConfigurableProvider.h>
#include <foundation/storage/provider/extensions/IFileIdentity.h>

#include <mutex>

namespace foundation::storage::backend::local::detail {

/// The local file system; `LocalProviderFactory` says how it behaves. It has no state but its configuration and its
/// subscriptions to change events; any number of threads may use it, also while it is configured.
class LocalProvider final : public provider::IConfigurableProvider, public provider::extensions::IFileIdentity {
 public:
  LocalProvider();
  ~LocalProvider() override;

 private:
  using StorageIRI = provider::StorageIRI;
  using ReplacementPolicy = provider::ReplacementPolicy;
  using Listing = provider::IProvider::Listing;

  void doCreateFile(const StorageIRI& location) const override;
  void doCreateFolder(const StorageIRI& location) const override;
  bool doFileExists(const StorageIRI& location) const override;
  bool doFolderExists(const StorageIRI& location) const override;
  void doRemoveFile(const StorageIRI& location) const override;
  void doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                  const ReplacementPolicy& policy) const override;
  void doRemoveFolder(const StorageIRI& location) const override;
  void doRemoveFolderRecursively(const StorageIRI& location) const override;
  /// An existing destination is replaced only if it is an empty folder.
  void doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                    const ReplacementPolicy& policy) const override;
  provider::FileAttributes doGetFileAttributes(const StorageIRI& location) const override;
  provider::FolderAttributes doGetFolderAttributes(const StorageIRI& location) const override;
  std::unique_ptr<provider::ByteStream> doOpenStream(const StorageIRI& location,
                                                     const provider::ByteStreamOpenOptions& options) const override;
  std::unique_ptr<provider::ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const override;
  /// The scratch file lies beside the file that is replaced: where a link is at `location`, beside the one
  /// that it leads to.
  std::unique_ptr<provider::TransactionalStream> doOpenTransactionalStream(
      const StorageIRI& location, const provider::ByteStreamOpenOptions& options) const override;
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
  /// In place: the file stays the same one, with its mode and all its links.
  void doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const override;
  /// Refuses to copy a file onto itself with `InvalidLocation`.
  void doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                  const ReplacementPolicy& policy) const override;
  provider::TransactionStatus doCopyFileAtomic(const StorageIRI& source, const StorageIRI& destination,
                                               const ReplacementPolicy& policy,
                                               const provider::InterruptCallback& interruptCallback) const override;
  void doSetLastModified(const StorageIRI& location, const boost::posix_time::ptime& time) const override;
  /// Gives the owner the permission to write, or takes it from everybody.
  void doSetWritable(const StorageIRI& location, bool writable) const override;
  bool doHasFeature(const provider::ExtendedFeature& feature) const override;
  provider::PathComparator doGetPathComparator(const StorageIRI& location) const override;
  provider::FilenameSensitivity doGetFilenameSensitivity(const StorageIRI& location) const override;
  provider::ExtendedAttributes doGetExtendedAttributes(const StorageIRI& location) const override;
  provider::ProviderStorageInfo doGetProviderStorageInfo(const StorageIRI& location) const override;
  StorageIRI doGetCanonicalLocation(const StorageIRI& location) const override;
  provider::ExistenceType doExists(const StorageIRI& location) const override;
  provider::ExistenceTypeExtended doExistsExtended(const StorageIRI& location) const override;
  std::u16string doGetFileIdentity(const StorageIRI& location) const override;
  void doPublishFolderEventsFor(const StorageIRI& location, const provider::ChangeCallback& callback,
                                const std::vector<events::Kind>& kinds,
                                provider::RecursiveFileWatching recursion) const override;
  void doPublishFileEventsFor(const StorageIRI& location, const provider::ChangeCallback& callback,
                              const std::vector<events::Kind>& kinds) const override;
  void doStopPublishingEventsFor(const StorageIRI& location) const override;

  void doConfigure(boost::property_tree::ptree configuration) override;

  Configuration configuration() const;
  std::shared_ptr<const FileSystem> files() const { return configuration().files; }
  Listing filtered(const StorageIRI& location, Listing listing, const std::u16string& wildcard) const;

  mutable std::mutex mutex_;     ///< guards the next one
  Configuration configuration_;  ///< an operation takes a copy and works with that
  mutable ChangeWatcher changes_;
};

}  // namespace foundation::storage::backend::local::detail
