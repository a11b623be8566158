#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/ChangeCallback.h>
#include <foundation/storage/provider/FileAttributes.h>
#include <foundation/storage/provider/FolderAttributes.h>
#include <foundation/storage/provider/IFolderEntryIterator.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace foundation::storage::provider {

namespace detail {
class FolderSnapshot;
}

/// What a poll asks of a store: lists a folder or its whole subtree, tells a file's or a folder's attributes. They
/// throw `Exception` with `ErrorCode::ResourceNotFound` where that is gone.
/// @{
using ListFolder = std::function<std::unique_ptr<IFolderEntryIterator>(StorageIRI)>;
using FetchFileAttributes = std::function<FileAttributes(StorageIRI)>;
using FetchFolderAttributes = std::function<FolderAttributes(StorageIRI)>;
/// @}

/// Watches one folder by looking: keeps what was there, compares it on each check with what is there now, and
/// publishes the differences, oldest knowledge first:
///
/// 1. `WatchedFolderModified` where the folder's own last-modified time changed;
/// 2. `EntryAdded` and `EntryModified` in the order of the listing;
/// 3. `EntryRemoved` in the order of the locations.
///
/// An entry is modified where its last-modified time is another one, also an earlier one; a change of its type
/// alone is none. Work that serves only kinds that nobody wants is not done.
///
/// The callback gets the watched folder, the entry (for the first two kinds the folder itself), its type and an
/// empty tree. It runs while the poller is locked, and must not call back into it.
class FOUNDATION_EXPORT SingleFolderChangePoller {
 public:
  /// Does nothing yet.
  /// @param listFolder  lists the folder's own entries or the whole subtree, as `recursion` says
  /// @param kinds       those that are published
  SingleFolderChangePoller(StorageIRI folder, ChangeCallback callback, ListFolder listFolder,
                           FetchFileAttributes getFileAttributes, FetchFolderAttributes getFolderAttributes,
                           std::vector<events::Kind> kinds, RecursiveChangePolling recursion);
  ~SingleFolderChangePoller();
  SingleFolderChangePoller(const SingleFolderChangePoller&) = delete;
  SingleFolderChangePoller& operator=(const SingleFolderChangePoller&) = delete;

  /// Remembers what is there; called once, before any check. Throws what the functions throw.
  void buildInitialSnapshot();

  /// Publishes what has changed since the last check. Where a function throws `Exception` with
  /// `ResourceNotFound`, the folder counts as gone: `WatchedFolderRemoved`, if that is wanted, and nothing
  /// ever after. Other failures of that type are written to the diagnostic log; whatever else is thrown passes.
  ///
  /// A check that fails has already forgotten the entries that it has compared: the next one reports them as
  /// added, and the folder as modified, rather than missing a change. Any number of threads may call it.
  void checkForChanges() const;

 private:
  using Described = std::pair<events::EntryType, boost::posix_time::ptime>;

  Described getTypeAndLastModified(const FolderEntry& entry) const;
  void incrementalCompareAndPublish() const;

  bool wants(events::Kind kind) const;
  bool wantsEntries() const;
  bool hasNeitherGainedNorLostEntries() const;
  void compareFolder() const;
  void compareEntries() const;
  void compareEntry(const FolderEntry& entry) const;
  void publishRemoved() const;
  void publish(events::Kind kind, const StorageIRI& subject, events::EntryType type) const;

  const StorageIRI folder_;
  const ChangeCallback callback_;
  const ListFolder listFolder_;
  const FetchFileAttributes getFileAttributes_;
  const FetchFolderAttributes getFolderAttributes_;
  const std::vector<events::Kind> kinds_;
  const RecursiveChangePolling recursion_;
  // Checking is const; what it remembers is not.
  const std::unique_ptr<detail::FolderSnapshot> snapshot_;
  mutable bool removed_ = false;
  mutable std::mutex mutex_;  ///< serialises building and checking; taken after the detector's
};

}  // namespace foundation::storage::provider
