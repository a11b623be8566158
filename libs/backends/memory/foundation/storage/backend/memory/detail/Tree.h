#pragma once

#include <foundation/storage/backend/memory/detail/Node.h>
#include <foundation/storage/backend/memory/detail/Place.h>
#include <foundation/storage/backend/memory/detail/Space.h>
#include <foundation/storage/backend/support/EntryTree.h>
#include <foundation/storage/backend/support/ListingScope.h>
#include <foundation/storage/provider/ByteStreamOpenOptions.h>
#include <foundation/storage/provider/FileAttributes.h>
#include <foundation/storage/provider/FolderAttributes.h>
#include <foundation/storage/provider/FolderEntry.h>
#include <foundation/storage/provider/ReplacementPolicy.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <memory>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

namespace foundation::storage::backend::memory::detail {

using Kind = provider::FolderEntry::EntryType;

/// The entries of one store. Every operation is done as a whole or not at all, and alone, but for those that
/// only look. Any number of threads may use it.
///
/// Each operation throws `Exception` with the location at fault; the codes are those that `IProvider` names.
class Tree {
 public:
  Tree();

  Space& space() { return *space_; }
  const Space& space() const { return *space_; }
  /// A file that is in no folder yet.
  std::shared_ptr<FileContent> makeContent() const { return std::make_shared<FileContent>(space_); }

  std::optional<Kind> kindOf(const Place& place) const;
  void createFile(const Place& place);
  void createFolder(const Place& place);
  void remove(const Place& place, Kind kind);
  void removeRecursively(const Place& place);
  void move(const Place& source, const Place& destination, provider::ReplacementPolicy policy, Kind kind);

  provider::FileAttributes fileAttributes(const Place& place) const;
  provider::FolderAttributes folderAttributes(const Place& place) const;
  void setLastModified(const Place& place, const boost::posix_time::ptime& time);
  void setWritable(const Place& place, bool writable);

  /// A file to be read.
  struct File {
    std::shared_ptr<FileContent> content;
    bool isWritable;
  };
  File file(const Place& place) const;
  /// A file to be written; created, and emptied, where that is asked for.
  std::shared_ptr<FileContent> fileForWriting(const Place& place, provider::ByteStreamCreate create,
                                              provider::ByteStreamTruncate truncate);
  /// Throws unless new content could be put at `destination`.
  /// @param source  what it is a copy of: not to be replaced by it
  void requireCanPut(const FileContent& source, const Place& destination, provider::ReplacementPolicy policy) const;
  /// Puts a new file in the place of what is there, where `requireCanPut` would allow it.
  void put(const File& copy, const FileContent& source, const Place& destination, provider::ReplacementPolicy policy);

  /// The entries of a folder, in the order of their names; a folder before what it holds.
  support::EntryTree::Items list(const Place& place, const support::ListingScope& scope) const;

 private:
  Node* find(const Place& place) const;
  Node& require(const Place& place) const;
  Node& require(const Place& place, Kind kind) const;
  Node& requireParent(const Place& place) const;
  Node& requireWritableParent(const Place& place) const;
  void insert(const Place& place, std::unique_ptr<Node> node);
  // All without the lock.
  void requireReplaceable(const FileContent& source, const Place& destination,
                          provider::ReplacementPolicy policy) const;
  void requireMoveDestination(const Node& moved, const Place& destination, provider::ReplacementPolicy policy) const;

  const std::shared_ptr<Space> space_ = std::make_shared<Space>();
  mutable std::shared_mutex mutex_;  ///< the outermost lock of the store: before those of contents and of the space
  Node root_;
};

}  // namespace foundation::storage::backend::memory::detail
