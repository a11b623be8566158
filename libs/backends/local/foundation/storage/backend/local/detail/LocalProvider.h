#pragma once

#include <foundation/storage/backend/local/detail/posix/ChangeWatcher.h>
#include <foundation/storage/provider/IProvider.h>
#include <foundation/storage/provider/extensions/IFileIdentity.h>

namespace foundation::storage::backend::local::detail {

/// The local file system; `LocalProviderFactory` says how it behaves. It has no state but its
/// subscriptions to change events, so any number of threads may use it.
class LocalProvider final : public provider::IProvider, public provider::extensions::IFileIdentity {
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
  /// Throws `UnsupportedOperation` where the destination is on another file system.
  void doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                  const ReplacementPolicy& policy) const override;
  void doRemoveFolder(const StorageIRI& location) const override;
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

  mutable ChangeWatcher changes_;
};

}  // namespace foundation::storage::backend::local::detail
