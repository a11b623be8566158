#pragma once

#include <foundation/storage/backend/archive/detail/Entry.h>
#include <foundation/storage/backend/archive/detail/StagedContent.h>
#include <foundation/storage/backend/support/TreeNode.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace foundation::storage::backend::archive::detail {

/// An entry of the tree, as it is now, changes included. All of it is guarded by the archive's lock.
struct Node : support::TreeNode<Node> {
  explicit Node(EntryKind nodeKind) : kind(nodeKind), permissions(nodeKind == EntryKind::Folder ? 0755 : 0644) {}

  bool isFolder() const { return kind == EntryKind::Folder; }
  bool isWritable() const { return (permissions & 0222) != 0; }
  boost::posix_time::ptime time() const { return staged ? staged->lastModified() : lastModified; }

  EntryKind kind;
  std::uint32_t permissions;
  boost::posix_time::ptime lastModified;  ///< where there is no staged content

  /// When it came into the tree: the number of the stored entry that brought it, be it as a folder around it; what is
  /// new, or was moved, came last.
  std::size_t arrival = last;
  static constexpr auto last = static_cast<std::size_t>(-1);

  /// The number of the stored entry that this is made of; none for what is new, and for folders that names only imply.
  std::optional<std::size_t> entry;
  // What is no longer as that entry tells:
  bool hasNewTime = false;
  bool hasNewPermissions = false;
  bool isCreated = false;  ///< a folder that is to be written though there is no entry of it

  // Of a file: staged content, or stored one.
  std::shared_ptr<StagedContent> staged;
  std::optional<std::size_t> source;  ///< the number of the stored entry that has the content
  std::optional<std::uint64_t> size;  ///< of stored content, in bytes
  // Of a link:
  std::optional<std::string> target;
};

}  // namespace foundation::storage::backend::archive::detail
