#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/CopyFileOptions.h>
#include <foundation/storage/provider/IProvider.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <boost/property_tree/ptree_fwd.hpp>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace foundation::storage::provider {

/// One file or folder in one store: a provider and a location. This is what programs hold and work with.
///
///     StorageItem notes(home, u"notes.txt");
///     if (notes.fileExists())
///       notes.copyFile(StorageItem(backup, u"notes.txt"), ReplacementPolicy::Overwrite);
///
/// The operations are those of `IProvider` without the location; what they mean, what they throw and
/// what they leave behind is said there. An item is a value; items share their provider. It may name
/// something that does not exist. Any number of threads may use one item.
class FOUNDATION_EXPORT StorageItem {
 public:
  /// @param provider  serves the location; not null
  StorageItem(std::shared_ptr<IProvider> provider, StorageIRI location);
  /// Another location in the store of `parent`.
  StorageItem(const StorageItem& parent, StorageIRI location);
  /// @param childName  a name in the folder `parent`, not escaped; see `StorageIRI`
  StorageItem(const StorageItem& parent, const std::u16string& childName);

  /// Whether both name the same location in the same provider object.
  bool operator==(const StorageItem& other) const;

  // --- Location ---

  /// Where this item is; nothing need be there.
  StorageIRI getLocation() const { return location_; }
  /// As `StorageIRI`'s of the same name.
  /// @{
  std::u16string getName() const { return location_.getName(); }
  std::u16string getScheme() const { return location_.getScheme(); }
  bool hasParent() const { return location_.hasParent(); }
  /// @}
  /// The folder that holds this item, in the same provider. Throws where `StorageIRI::getParent` throws.
  StorageItem getParent() const { return {*this, location_.getParent()}; }

  // --- Existence, creating, removing ---

  /// As `IProvider`'s of the same name, for this location.
  /// @{
  bool fileExists() const;
  bool folderExists() const;
  ExistenceType exists() const;
  ExistenceTypeExtended existsExtended() const;
  void createFile() const;
  void createFolder() const;
  void createFolderRecursive() const;
  void removeFile() const;
  void removeFolder() const;
  void removeFolderRecursively() const;
  /// @}

  // --- Moving and copying ---

  /// As `IProvider`'s of the same name, from this location.
  /// @param destination  in the same store
  /// @{
  void moveFile(const StorageIRI& destination, const ReplacementPolicy& policy) const;
  void moveFolder(const StorageIRI& destination, const ReplacementPolicy& policy) const;
  /// @}

  /// Copies this file to `destination`, in whatever store that is. Items of one provider are copied by
  /// the provider, if it can do what the options ask; all else goes through streams in blocks of 4 MiB.
  ///
  /// Throws `ResourceAlreadyExists` with the destination's location, before anything else happens, where
  /// a file is there and the policy keeps it. A file is not copied onto itself, under whatever name:
  /// `InvalidLocation`. With `TransactionPolicy::Atomic` the destination is either untouched or whole. With
  /// `NonAtomic`, a copy that fails or is interrupted leaves what was written.
  /// Failures of either side pass through, `Exception` and `ByteStreamFailure`.
  /// @return `Aborted` where the callback ended the copy
  TransactionStatus copyFile(const StorageItem& destination, const CopyFileOptions& options) const;

  /// The same, not atomic and without a callback.
  void copyFile(const StorageItem& destination, const ReplacementPolicy& policy) const;

  // --- Attributes ---

  /// As `IProvider`'s of the same name, for this location.
  /// @{
  FileAttributes getFileAttributes() const;
  FolderAttributes getFolderAttributes() const;
  ExtendedAttributes getExtendedAttributes() const;
  void setLastModified(const boost::posix_time::ptime& time) const;
  void setWritable(bool writable) const;
  void truncateToSize(std::uint64_t newSize) const;
  /// @}

  // --- Content ---

  /// As `IProvider`'s of the same name, for this location.
  /// @{
  std::unique_ptr<ByteStream> openReadOnlyStream() const;
  std::unique_ptr<ByteStream> openStream(const ByteStreamOpenOptions& options) const;
  std::unique_ptr<TransactionalStream> openTransactionalStream(const ByteStreamOpenOptions& options) const;
  /// @}

  // --- Listings ---

  /// As `IProvider`'s of the same name, for this location.
  /// @{
  IProvider::Listing listAll(std::u16string wildcard) const;
  IProvider::Listing listFiles(std::u16string wildcard) const;
  IProvider::Listing listFolders(std::u16string wildcard) const;
  IProvider::Listing listAllNamesOnly(std::u16string wildcard) const;
  IProvider::Listing listFilesNamesOnly(std::u16string wildcard) const;
  IProvider::Listing listFoldersNamesOnly(std::u16string wildcard) const;
  IProvider::Listing listAllRecursive(std::u16string wildcard) const;
  IProvider::Listing listAllRecursiveNamesOnly(std::u16string wildcard) const;
  /// @}

  // --- Change events ---

  /// As `IProvider`'s of the same name (and "For"), for this location.
  /// @{
  void publishFileEvents(const ChangeCallback& callback, const std::vector<events::Kind>& kinds) const;
  void publishFolderEvents(const ChangeCallback& callback, const std::vector<events::Kind>& kinds,
                           RecursiveFileWatching recursion) const;
  void stopPublishingFileEvents() const;
  void stopPublishingFolderEvents() const;
  void startChangePollingMechanism(const ChangeCallback& callback, const std::vector<events::Kind>& kinds,
                                   std::chrono::milliseconds period, RecursiveChangePolling recursion) const;
  void stopChangePollingMechanism() const;
  /// @}

  // --- The store ---

  /// As `IProvider`'s of the same name, for this location.
  /// @{
  bool hasFeature(const ExtendedFeature& feature) const;
  PathComparator getPathComparator() const;
  StorageIRI getCanonicalLocation() const;
  FilenameSensitivity getFilenameSensitivity() const;
  ProviderCacheUsage getProviderCacheUsage() const;
  ProviderStorageInfo getProviderStorageInfo() const;
  /// @}

  /// What the provider offers beside `IProvider`, of that type, such as `extensions::IFileIdentity`; null where it does
  /// not. Lives as long as an item of this provider.
  template <class Extension>
  Extension* findExtension() const {
    return dynamic_cast<Extension*>(provider_.get());
  }

  /// Sets the provider's options; does nothing where it takes none (`IConfigurableProvider`).
  void configure(boost::property_tree::ptree configuration) const;
  /// Has the provider hand all its changes to its store, not this item's alone; does nothing where it is no
  /// `extensions::IFlushableFilesystem`, and throws what the back end throws.
  void flushFilesystem() const;
  /// Shuts the provider down, for all items that share it; see `IProvider::shutdown`.
  void shutdownProvider() const;

 private:
  friend FOUNDATION_EXPORT void invalidateProvider(const StorageItem& item);

  bool hasSameProviderInstance(const StorageItem& other) const { return provider_ == other.provider_; }

  std::shared_ptr<IProvider> provider_;
  StorageIRI location_;
};

}  // namespace foundation::storage::provider
