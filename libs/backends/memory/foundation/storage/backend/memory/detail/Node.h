#pragma once

#include <foundation/storage/backend/memory/detail/FileContent.h>
#include <foundation/storage/backend/support/TreeNode.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <memory>
#include <utility>

namespace foundation::storage::backend::memory::detail {

/// An entry of the tree: a file or a folder. All of it is guarded by the tree's lock.
struct Node : support::TreeNode<Node> {
  /// A file where there is content, else a folder.
  explicit Node(std::shared_ptr<FileContent> fileContent) : content(std::move(fileContent)) {}

  bool isFolder() const { return content == nullptr; }

  bool isWritable = true;
  std::shared_ptr<FileContent> content;
  boost::posix_time::ptime lastModified = now();  ///< of a folder
};

}  // namespace foundation::storage::backend::memory::detail
