#pragma once

#include <foundation/storage/backend/archive/ArchiveFormat.h>
#include <foundation/storage/backend/archive/detail/Configuration.h>
#include <foundation/storage/backend/archive/detail/Container.h>
#include <foundation/storage/backend/archive/detail/Place.h>
#include <foundation/storage/backend/archive/detail/StagedContent.h>
#include <foundation/storage/backend/archive/detail/StoredArchive.h>
#include <foundation/storage/backend/archive/detail/Tree.h>
#include <foundation/storage/backend/support/EntryTree.h>
#include <foundation/storage/backend/support/ListingScope.h>
#include <foundation/storage/provider/ByteStreamOpenOptions.h>
#include <foundation/storage/provider/ExistenceType.h>
#include <foundation/storage/provider/FileAttributes.h>
#include <foundation/storage/provider/FolderAttributes.h>
#include <foundation/storage/provider/FolderEntry.h>
#include <foundation/storage/provider/ProviderStorageInfo.h>
#include <foundation/storage/provider/ReplacementPolicy.h>

#include <memory>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

namespace foundation::storage::backend::archive::detail {

class Commit;

using FileOrFolder = provider::FolderEntry::EntryType;

/// An archive with the changes that wait to be written. To be owned by `std::shared_ptr`: streams and listings keep it,
/// and the last one who lets go of it writes what still waits. Any number of threads may use it; every operation is
/// done as a whole or not at all, and alone, but for those that only look.
///
/// Operations throw `Exception` with the location at fault; the codes are those that `IProvider` names. Those that
/// write do so with `ReadOnlyProvider` where the format is not written.
class Archive : public std::enable_shared_from_this<Archive> {
 public:
  /// @param root  the location of the archive's root
  Archive(ArchiveFormat format, provider::StorageItem container, provider::StorageIRI root);
  Archive(const Archive&) = delete;
  Archive& operator=(const Archive&) = delete;
  ~Archive();

  const provider::StorageIRI& root() const { return root_; }
  /// Throws `Exception` with `InvalidLocation` for a location in another archive.
  void requireHere(const provider::StorageIRI& location) const;
  /// Whether archives of its format are.
  bool isWritten() const;
  /// Throws unless they are.
  void requireWritten(const provider::StorageIRI& location) const;
  void configure(const Configuration& configuration);

  // --- Looking ---

  provider::ExistenceTypeExtended existence(const Place& place) const;
  provider::FileAttributes fileAttributes(const Place& place) const;
  provider::FolderAttributes folderAttributes(const Place& place) const;
  provider::ProviderStorageInfo storageInfo(const Place& place) const;
  /// The entries of a folder, in the order of the archive, and what is new behind them; a folder before what it holds.
  support::EntryTree::Items list(const Place& place, const support::ListingScope& scope) const;

  /// The content of a file, one way or the other.
  struct Content {
    std::shared_ptr<StagedContent> staged;
    std::shared_ptr<const StoredArchive> stored;
    std::size_t number = 0;             ///< of the stored entry
    std::optional<std::uint64_t> size;  ///< of stored content
    std::uint32_t permissions = 0;
  };
  Content content(const Place& place) const;
  /// A stream that reads a file. It goes on with what the file is now, whatever is written meanwhile.
  std::unique_ptr<provider::ByteStream> read(const Place& place) const;

  /// A text that two paths share where they lead to one file.
  std::u16string identity(const Place& place) const;

  // --- Changing ---

  void createFile(const Place& place);
  /// For the root: makes an archive that is not there yet.
  void createFolder(const Place& place);
  /// With all that is missing on the way, the archive included.
  void createFolders(const Place& place);
  void remove(const Place& place, FileOrFolder what);
  void removeRecursively(const Place& place);
  void move(const Place& source, const Place& destination, provider::ReplacementPolicy policy, FileOrFolder what);
  void setLastModified(const Place& place, const boost::posix_time::ptime& time);
  void setWritable(const Place& place, bool writable);

  /// A file to be written; created, and emptied, where that is asked for.
  std::unique_ptr<StagedContent::Writing> beginWriting(const Place& place, provider::ByteStreamCreate create,
                                                       provider::ByteStreamTruncate truncate);
  /// Throws unless new content could be put at `destination`.
  /// @param source  a file that must not be replaced, as the content is a copy of it; null where there is none
  void requireCanPut(const Place& destination, provider::ReplacementPolicy policy, const Place* source) const;
  /// Puts a file in the place of what is there, where `requireCanPut` would allow it.
  void put(const Content& copy, const Place& destination, provider::ReplacementPolicy policy, const Place* source);

  /// To be called when a stream has written: the archive is written where every change is.
  /// @param location  for failures
  void noteWritten(const provider::StorageIRI& location);

  // --- The stored archive ---

  /// Writes the changes into the container, and makes the store that holds it do the same with its own.
  void flush();
  /// Forgets what was read, unless changes are waiting.
  void invalidate();
  /// Flushes, and forgets everything: it is read anew when it is asked for.
  void close();

 private:
  /// Forgets what was read where the container is another one by now, unless changes are waiting.
  void noticeReplacement() const;
  // Locks, once the archive is read, if there is one.
  std::shared_lock<std::shared_mutex> lockToLook() const;
  std::unique_lock<std::shared_mutex> lockToChange(const provider::StorageIRI& location);

  // All of these without the lock.
  bool load() const;
  void requireThere(const provider::StorageIRI& location) const;
  void requireNesting() const;
  void forget() const;
  /// Makes an archive where there is none.
  void begin();
  void commitChange(const provider::StorageIRI& location);
  void flushOutwards(const provider::StorageIRI& location);
  void finishChange(const provider::StorageIRI& location);

  void commit();
  bool isReplacedBy(const Commit& commit) const noexcept;
  void rememberStamp() noexcept;
  void requireUnchangedByOthers() const;

  Node* find(const Place& place, AtEnd atEnd) const;
  Node& require(const Place& place, AtEnd atEnd) const;
  Node& require(const Place& place, AtEnd atEnd, FileOrFolder what) const;
  Node& requireFile(const Place& place) const;
  /// Where something could be put: with the folder that would hold it.
  Tree::Found requireSpot(const Place& place, AtEnd atEnd) const;
  Tree::Found requireWritableSpot(const Place& place, AtEnd atEnd) const;
  void replace(const Tree::Found& spot, std::unique_ptr<Node> node, const provider::StorageIRI& location);
  Node& insert(const Place& place, std::unique_ptr<Node> node, AtEnd atEnd);
  Tree::Found requireReplaceable(const Place& place, provider::ReplacementPolicy policy, const Place* source) const;
  void requireMoveDestination(const Node& moved, const Tree::Found& to, const Place& destination,
                              provider::ReplacementPolicy policy) const;
  void stage(Node& node, const provider::StorageIRI& location, provider::ByteStreamTruncate truncate);
  Content contentOf(const Node& node) const;
  const Node* target(const Names& names) const;
  /// @param path  of the node, relative to the folder
  provider::FolderEntry entryOf(const Names& folder, const std::u16string& path, const std::u16string& name,
                                const Node& node, const support::ListingScope& scope) const;

  const ArchiveFormat format_;
  const provider::StorageItem item_;  ///< the file that is the archive
  const provider::StorageIRI root_;

  /// Guards what follows. Taken before the locks of staged contents, and before those of the archive around this one.
  mutable std::shared_mutex mutex_;
  Configuration configuration_;
  // What was read; reading changes nothing that anybody could see.
  mutable std::shared_ptr<Container> container_;
  mutable std::unique_ptr<Tree> tree_;                   ///< none as long as nothing was asked
  mutable std::shared_ptr<const StoredArchive> stored_;  ///< none for an archive that is only to be made
  mutable std::optional<Container::Stamp> stamp_;        ///< of the container, when it was read
  mutable bool isStampKnown_ = true;                     ///< not where the store fails to tell it after a commit
  bool isChanged_ = false;                               ///< whether something waits to be written
};

}  // namespace foundation::storage::backend::archive::detail
