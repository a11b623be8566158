#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/ByteStreamOpenOptions.h>
#include <foundation/storage/provider/CaseModifier.h>
#include <foundation/storage/provider/ChangeCallback.h>
#include <foundation/storage/provider/ExistenceType.h>
#include <foundation/storage/provider/ExtendedAttributes.h>
#include <foundation/storage/provider/ExtendedFeature.h>
#include <foundation/storage/provider/FileAttributes.h>
#include <foundation/storage/provider/FilenameSensitivity.h>
#include <foundation/storage/provider/FolderAttributes.h>
#include <foundation/storage/provider/IFolderEntryIterator.h>
#include <foundation/storage/provider/InterruptSignal.h>
#include <foundation/storage/provider/ProviderCacheUsage.h>
#include <foundation/storage/provider/ProviderStorageInfo.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/StorageIRI.h>
#include <foundation/storage/provider/TransactionPolicy.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// The contract between programs and stores: locations, items, providers, streams and failures.
namespace foundation::storage::provider {

class PollingChangeEventsDetector;

/// Compares two names or paths; true where they name the same thing under the given rule of case.
using PathComparator = std::function<bool(const std::u16string&, const std::u16string&, CaseModifier)>;

/// One store: answers all operations on files and folders for the locations that it serves. Providers
/// come from factories and are shared; most programs use them through `StorageItem`.
///
/// **Failures.** Operations throw `Exception` with an `ErrorCode` and the location concerned; streams
/// throw `ByteStreamFailure`. An operation that throws leaves existing files and folders as they were,
/// unless it says otherwise. `UnsupportedOperation` means that the store has no such operation,
/// `ResourceNotFound` that nothing is at the location, `InvalidLocation` that the location cannot name
/// what is asked for: a file where a folder is needed or the reverse, a path through a file, a name that
/// the store cannot have, another store's location.
///
/// **Threads.** All operations but `shutdown` may be called by any number of threads at once.
///
/// **For authors of back ends.** Every public operation forwards to a private virtual one with `do` in
/// front. Override the pure ones; the others have defaults that refuse with `UnsupportedOperation` (a
/// provider that has the operation overrides it), answer neutrally, or are built out of the other `do`
/// operations: override those where the store can do better. The order of the virtual operations is
/// part of the contract. The destructor of the most derived class calls `endChangePolling()` before anything
/// else: until then a polling thread may call the virtual operations.
class FOUNDATION_EXPORT IProvider {
 public:
  /// Never null.
  using Listing = std::unique_ptr<IFolderEntryIterator>;

  IProvider();
  IProvider(const IProvider&) = delete;
  IProvider& operator=(const IProvider&) = delete;

  // The virtual operations, in the order of their slots: the public destructor, then the `do`
  // operations. One of them is protected, so that a back end can call another's.

  virtual ~IProvider();

 private:
  /// What the public operation of the same name, without `do`, promises.
  /// @{
  virtual void doCreateFile(const StorageIRI& location) const = 0;
  virtual void doCreateFolder(const StorageIRI& location) const = 0;
  /// Default: creates the missing folders from the outermost inwards with `doCreateFolder`.
  virtual void doCreateFolderRecursive(const StorageIRI& location) const;
  virtual bool doFileExists(const StorageIRI& location) const = 0;
  virtual bool doFolderExists(const StorageIRI& location) const = 0;
  virtual void doRemoveFile(const StorageIRI& location) const = 0;
  virtual void doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                          const ReplacementPolicy& policy) const = 0;
  virtual void doRemoveFolder(const StorageIRI& location) const = 0;
  /// Default: refuses. Override `doHasFeature` along with it.
  virtual void doRemoveFolderRecursively(const StorageIRI& location) const;
  virtual void doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                            const ReplacementPolicy& policy) const = 0;
  virtual FileAttributes doGetFileAttributes(const StorageIRI& location) const = 0;
  virtual FolderAttributes doGetFolderAttributes(const StorageIRI& location) const = 0;
  virtual std::unique_ptr<ByteStream> doOpenStream(const StorageIRI& location,
                                                   const ByteStreamOpenOptions& options) const = 0;
  virtual std::unique_ptr<ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const = 0;
  /// Default: `doOpenTransactionalStreamAtScratchLocation` with a hidden name of its own beside the target.
  virtual std::unique_ptr<TransactionalStream> doOpenTransactionalStream(const StorageIRI& location,
                                                                         const ByteStreamOpenOptions& options) const;
  /// Default: writes to a stream at the scratch location; committing moves that over the target, aborting
  /// removes it.
  virtual std::unique_ptr<TransactionalStream> doOpenTransactionalStreamAtScratchLocation(
      const StorageIRI& location, const StorageIRI& scratchLocation, const ByteStreamOpenOptions& options) const;
  /// @}

  /// What the public listing of the same name, without `do`, promises; with `Wildcards` for a wildcard that is not
  /// empty. Default, where there is one: those with a wildcard drop it and are those without; those of names are the
  /// full ones.
  /// @{
  virtual Listing doListAll(const StorageIRI& location) const = 0;
  virtual Listing doListAllWildcards(const StorageIRI& location, std::u16string wildcard) const;
  virtual Listing doListFiles(const StorageIRI& location) const = 0;
  virtual Listing doListFilesWildcards(const StorageIRI& location, std::u16string wildcard) const;
  virtual Listing doListFolders(const StorageIRI& location) const = 0;
  virtual Listing doListFoldersWildcards(const StorageIRI& location, std::u16string wildcard) const;
  virtual Listing doListAllNamesOnly(const StorageIRI& location) const;
  virtual Listing doListAllNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const;
  virtual Listing doListFoldersNamesOnly(const StorageIRI& location) const;
  virtual Listing doListFoldersNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const;
  virtual Listing doListFilesNamesOnly(const StorageIRI& location) const;
  virtual Listing doListFilesNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const;
  /// @}

 protected:
  /// Default: refuses, and with it all recursive listings that are not overridden. Entries are named by
  /// their path relative to `location`, with '/'.
  virtual Listing doListAllRecursive(const StorageIRI& location) const;

 private:
  /// What the public listing of the same name, without `do`, promises; with `Wildcards` for a wildcard that is not
  /// empty. Default: `doListAllRecursive`, without the wildcard.
  /// @{
  virtual Listing doListAllRecursiveWildcards(const StorageIRI& location, std::u16string wildcard) const;
  virtual Listing doListAllRecursiveNamesOnly(const StorageIRI& location) const;
  virtual Listing doListAllRecursiveNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const;
  /// @}
  /// Default: copies through streams.
  virtual void doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                          const ReplacementPolicy& policy) const;
  /// Default: refuses. Override `doHasFeature` along with it.
  virtual TransactionStatus doCopyFileAtomic(const StorageIRI& source, const StorageIRI& destination,
                                             const ReplacementPolicy& policy,
                                             const InterruptCallback& interruptCallback) const;
  /// Default: refuses.
  virtual void doSetLastModified(const StorageIRI& location, const boost::posix_time::ptime& time) const;
  /// Default: refuses.
  virtual void doSetWritable(const StorageIRI& location, bool writable) const;
  /// Default: throws `ChangeEventsNotSupportedException`.
  virtual void doPublishFolderEventsFor(const StorageIRI& location, const ChangeCallback& callback,
                                        const std::vector<events::Kind>& kinds, RecursiveFileWatching recursion) const;
  /// Default: throws `ChangeEventsNotSupportedException`.
  virtual void doPublishFileEventsFor(const StorageIRI& location, const ChangeCallback& callback,
                                      const std::vector<events::Kind>& kinds) const;
  /// Default: does nothing.
  virtual void doStopPublishingEventsFor(const StorageIRI& location) const;
  /// Default: looks every period, on one thread for all folders of this provider.
  virtual void doStartChangePollingMechanism(const StorageIRI& location, const ChangeCallback& callback,
                                             const std::vector<events::Kind>& kinds, std::chrono::milliseconds period,
                                             RecursiveChangePolling recursion) const;
  /// Default: ends what the default of starting began.
  virtual void doStopChangePollingMechanism(const StorageIRI& location) const;
  /// Default: false.
  virtual bool doHasFeature(const ExtendedFeature& feature) const;
  /// Default: compares code units, case-insensitively after simple lower-casing.
  virtual PathComparator doGetPathComparator(const StorageIRI& location) const;
  /// Default: the location's resolved form.
  virtual StorageIRI doGetCanonicalLocation(const StorageIRI& location) const;
  /// Default: case-sensitive and case-preserving.
  virtual FilenameSensitivity doGetFilenameSensitivity(const StorageIRI& location) const;
  /// Default: does nothing.
  virtual void doShutdown();
  /// Default: from `doFileExists` and `doFolderExists`, in this order.
  virtual ExistenceType doExists(const StorageIRI& location) const;
  /// Default: the same; links and special files are not told apart.
  virtual ExistenceTypeExtended doExistsExtended(const StorageIRI& location) const;
  /// Default: none.
  virtual ExtendedAttributes doGetExtendedAttributes(const StorageIRI& location) const;
  /// Default: refuses.
  virtual ProviderStorageInfo doGetProviderStorageInfo(const StorageIRI& location) const;
  /// Default: grows a file by appending zeros; shrinks it by copying what stays to a new file beside it,
  /// which then takes its place.
  virtual void doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const;
  /// Default: no figure.
  virtual ProviderCacheUsage doGetProviderCacheUsage(const StorageIRI& location) const;

 public:
  // --- Existence ---

  /// Whether a file (anything but a folder), a folder, or which of them is there. Links are followed; one that leads
  /// nowhere is nothing. Where the way there is missing, or leads through a file, nothing is there. Throws where the
  /// store cannot tell: `PermissionDenied`, `IOError`, and `InvalidLocation` for another store's location.
  /// @{
  bool fileExists(const StorageIRI& location) const { return doFileExists(location); }
  bool folderExists(const StorageIRI& location) const { return doFolderExists(location); }
  ExistenceType exists(const StorageIRI& location) const { return doExists(location); }
  /// @}
  /// What is there, a link being told as one. Throws as `exists`.
  ExistenceTypeExtended existsExtended(const StorageIRI& location) const { return doExistsExtended(location); }

  // --- Creating and removing ---

  /// Creates an empty file in an existing folder. Throws `ResourceAlreadyExists` where anything is there, and
  /// `ResourceNotFound` where the folder is missing.
  void createFile(const StorageIRI& location) const { doCreateFile(location); }
  /// Creates a folder in an existing one. Throws as `createFile`.
  void createFolder(const StorageIRI& location) const { doCreateFolder(location); }
  /// Creates a folder and all missing folders above it; those created stay if a later one fails. Throws
  /// `ResourceAlreadyExists` where anything is at `location`, and `ResourceNotFound` where the store's
  /// root is missing.
  void createFolderRecursive(const StorageIRI& location) const { doCreateFolderRecursive(location); }
  /// Removes a file or a link, not what the link leads to. Throws `InvalidLocation` for a folder.
  void removeFile(const StorageIRI& location) const { doRemoveFile(location); }
  /// Removes an empty folder. Throws `FolderNotEmpty` where it holds anything, and `InvalidLocation` for a file.
  void removeFolder(const StorageIRI& location) const { doRemoveFolder(location); }
  /// Removes a folder with all it holds, never following links; see
  /// `ExtendedFeature::RecursiveFolderRemoval`. Entries removed before a failure stay removed. Throws
  /// `InvalidLocation` for a file.
  void removeFolderRecursively(const StorageIRI& location) const { doRemoveFolderRecursively(location); }

  // --- Moving and copying within this store ---

  /// Moves a file to the location `destination` (not into it), where `policy` says what becomes of a file that is
  /// there. Throws, with the location at fault,
  /// - `ResourceAlreadyExists` where a file is at the destination and the policy keeps it;
  /// - `InvalidLocation` where a folder is at either;
  /// - `ResourceNotFound` where there is no source, or no folder for the destination;
  /// - `UnsupportedOperation` where the store cannot move between the two.
  void moveFile(const StorageIRI& source, const StorageIRI& destination, const ReplacementPolicy& policy) const {
    doMoveFile(source, destination, policy);
  }
  /// Moves a folder with all it holds to the location `destination` (not into it), where `policy` says what becomes of
  /// an empty folder that is there. Throws as `moveFile`, with files and folders exchanged, and `FolderNotEmpty` where
  /// the folder that is to be replaced holds anything, `InvalidLocation` with the destination where that lies inside
  /// the source.
  void moveFolder(const StorageIRI& source, const StorageIRI& destination, const ReplacementPolicy& policy) const;
  /// Copies a file's content, and what else the back end says; links are followed. Throws `ResourceAlreadyExists` with
  /// the destination where a file is there and the policy keeps it, and `InvalidLocation` where it is the source. After
  /// a failure the destination may be incomplete.
  void copyFile(const StorageIRI& source, const StorageIRI& destination, const ReplacementPolicy& policy) const {
    doCopyFile(source, destination, policy);
  }
  /// Copies a file so that the destination is either untouched or whole, asking the callback between
  /// steps whether to go on; see `ExtendedFeature::AtomicFileCopy`. Throws as `copyFile`.
  /// @param interruptCallback  may be empty
  /// @return `Aborted` where the callback ended the copy
  TransactionStatus copyFileAtomic(const StorageIRI& source, const StorageIRI& destination,
                                   const ReplacementPolicy& policy, const InterruptCallback& interruptCallback) const {
    return doCopyFileAtomic(source, destination, policy, interruptCallback);
  }

  // --- Attributes ---

  /// What is known of a file, or of a folder. Links are followed, but for `isSymlink()`. Throws `ResourceNotFound`
  /// where nothing is there, and `InvalidLocation` where it is the other kind.
  /// @{
  FileAttributes getFileAttributes(const StorageIRI& location) const { return doGetFileAttributes(location); }
  FolderAttributes getFolderAttributes(const StorageIRI& location) const { return doGetFolderAttributes(location); }
  /// @}
  /// Further attributes of a file or folder; none where the store has none.
  ExtendedAttributes getExtendedAttributes(const StorageIRI& location) const {
    return doGetExtendedAttributes(location);
  }
  /// Sets when a file or folder was last modified.
  /// @param time  UTC; what is no point in time is refused
  void setLastModified(const StorageIRI& location, const boost::posix_time::ptime& time) const {
    doSetLastModified(location, time);
  }
  /// Lets a file be written, or a folder's entries be changed, or forbids it: whoever tries then is refused with
  /// `PermissionDenied`, as far as the store binds this user.
  void setWritable(const StorageIRI& location, bool writable) const { doSetWritable(location, writable); }
  /// Cuts a file off, or fills it up with zeros. A failure may leave a file that has grown in part, and, by
  /// the default, a scratch file whose name is this one's and a UUID.
  /// @param newSize  in bytes
  void truncateToSize(const StorageIRI& location, std::uint64_t newSize) const { doTruncateToSize(location, newSize); }

  // --- Content ---

  /// Opens a file for writing, and for reading too where the access is `ReadWrite`. Throws
  /// `ByteStreamOpenFailure` or `Exception`.
  std::unique_ptr<ByteStream> openStream(const StorageIRI& location, const ByteStreamOpenOptions& options) const;
  /// Opens a file for reading. Throws as `openStream`.
  std::unique_ptr<ByteStream> openReadOnlyStream(const StorageIRI& location) const;
  /// Opens a file for writing so that nothing of it shows before the commit. It begins empty, whatever the
  /// options say of existing content. The provider must outlive the stream.
  ///
  /// By the default the bytes go to a scratch file beside `location`, which listings show as long as the
  /// transaction lasts: its name is "." + a random UUID + ".tmp.bak". The options are the scratch file's, so
  /// `NeverCreate` always fails. Committing replaces the file at `location` by a new one: in one step, if
  /// the store moves in one step, and not necessarily onto the disk already. What the store keeps beside the
  /// content (permissions, further links) is not carried over, unless the back end says so; that a folder is in the
  /// way shows only at the commit.
  ///
  /// Throws `InvalidLocation` where `location` has no parent folder, and what `openStream` throws, for the
  /// scratch file.
  std::unique_ptr<TransactionalStream> openTransactionalStream(const StorageIRI& location,
                                                               const ByteStreamOpenOptions& options) const {
    return doOpenTransactionalStream(location, options);
  }

  // --- Listings ---

  /// The entries of a folder: all of them, the files or the folders. Those of names only may give entries without
  /// attributes. Throws `ResourceNotFound` where nothing is there, and `InvalidLocation` for a file; at once, or when
  /// the walk begins.
  /// @param wildcard  limits the listing to the names that match it, if the back end has wildcards
  ///                  (`Capability::Wildcards`); the empty one limits nothing
  /// @{
  Listing listAll(const StorageIRI& location, std::u16string wildcard) const;
  Listing listFiles(const StorageIRI& location, std::u16string wildcard) const;
  Listing listFolders(const StorageIRI& location, std::u16string wildcard) const;
  Listing listAllNamesOnly(const StorageIRI& location, std::u16string wildcard) const;
  Listing listFilesNamesOnly(const StorageIRI& location, std::u16string wildcard) const;
  Listing listFoldersNamesOnly(const StorageIRI& location, std::u16string wildcard) const;
  /// @}
  /// All entries of the whole subtree, each named by its path relative to `location`, a folder before what it holds;
  /// links to folders are not descended into. Throws as `listAll`, and `UnsupportedOperation` where the store has no
  /// recursive listings.
  /// @param wildcard  as for `listAll`; of a path, the last name counts
  /// @{
  Listing listAllRecursive(const StorageIRI& location, std::u16string wildcard) const;
  Listing listAllRecursiveNamesOnly(const StorageIRI& location, std::u16string wildcard) const;
  /// @}

  // --- Change events ---

  /// Publishes the store's own change events, of those kinds, until they are stopped. Throws
  /// `ChangeEventsNotSupportedException` where it has none, `ChangeEventsSubscriptionException` where subscribing
  /// failed. The callback runs on a thread of the provider's; what it must not do, the back end says.
  /// @{
  void publishFileEventsFor(const StorageIRI& location, const ChangeCallback& callback,
                            const std::vector<events::Kind>& kinds) const {
    doPublishFileEventsFor(location, callback, kinds);
  }
  void publishFolderEventsFor(const StorageIRI& location, const ChangeCallback& callback,
                              const std::vector<events::Kind>& kinds, RecursiveFileWatching recursion) const {
    doPublishFolderEventsFor(location, callback, kinds, recursion);
  }
  /// @}
  /// Ends the subscription of the folder that holds the file: that is where file events come from.
  void stopPublishingFileEventsFor(const StorageIRI& location) const {
    doStopPublishingEventsFor(location.getParent());
  }
  /// Ends the subscriptions of the folder, and of files in it; does nothing where there are none.
  void stopPublishingFolderEventsFor(const StorageIRI& location) const { doStopPublishingEventsFor(location); }
  /// Publishes changes found by listing the folder every `period`; see `PollingChangeEventsDetector` for when,
  /// and `SingleFolderChangePoller` for what. One thread looks after all folders of a provider, and the first
  /// start decides for all of them on the callback and the period. A folder that is watched already stays
  /// watched as it is.
  ///
  /// The callback runs on that thread and must not start or stop polling. Throws what listing the folder and
  /// reading its attributes throws; nothing is watched then.
  /// @param recursion  the whole subtree only where the store has recursive listings
  void startChangePollingMechanism(const StorageIRI& location, const ChangeCallback& callback,
                                   const std::vector<events::Kind>& kinds, std::chrono::milliseconds period,
                                   RecursiveChangePolling recursion) const {
    doStartChangePollingMechanism(location, callback, kinds, period, recursion);
  }
  /// Waits for a pass under way; nothing is published for the folder after that. Does nothing for a folder that
  /// is not watched.
  void stopChangePollingMechanism(const StorageIRI& location) const { doStopChangePollingMechanism(location); }

  // --- About the store ---

  /// Whether the provider has an operation that not all have.
  bool hasFeature(const ExtendedFeature& feature) const { return doHasFeature(feature); }
  /// What compares names and paths as the store does at `location`.
  PathComparator getPathComparator(const StorageIRI& location) const { return doGetPathComparator(location); }
  /// The one location that stands for all locations of the same file or folder.
  StorageIRI getCanonicalLocation(const StorageIRI& location) const { return doGetCanonicalLocation(location); }
  /// How names at `location` treat upper and lower case.
  FilenameSensitivity getFilenameSensitivity(const StorageIRI& location) const {
    return doGetFilenameSensitivity(location);
  }
  /// How big and how full the store is that `location` is in. Throws `UnsupportedOperation` where it does not tell.
  ProviderStorageInfo getProviderStorageInfo(const StorageIRI& location) const {
    return doGetProviderStorageInfo(location);
  }
  /// How much room the provider's cache has left, if it has one.
  ProviderCacheUsage getProviderCacheUsage(const StorageIRI& location) const {
    return doGetProviderCacheUsage(location);
  }
  /// Releases what the provider holds; it is not to be used afterwards. Not coordinated with other calls.
  void shutdown() { doShutdown(); }

 protected:
  /// Ends all polling and its thread; again, it does nothing. Waits for a pass under way. For destructors of
  /// concrete providers, which call it first: the thread calls virtual operations of theirs.
  void endChangePolling() noexcept;

 private:
  void expandFile(const StorageIRI& location, std::uint64_t oldSize, std::uint64_t newSize) const;
  void shrinkFile(const StorageIRI& location, std::uint64_t newSize) const;

  mutable std::unique_ptr<PollingChangeEventsDetector> detector_;  ///< from the first start on
  mutable std::mutex pollingMutex_;                                ///< guards the pointer; before the detector's
};

}  // namespace foundation::storage::provider
