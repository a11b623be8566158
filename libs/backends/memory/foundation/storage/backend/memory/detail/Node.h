#pragma once

#include <foundation/storage/backend/memory/detail/FileContent.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <map>
#include <memory>
#include <string>

namespace foundation::storage::backend::memory::detail {

/// An entry of the tree: a file or a folder. All of it is guarded by the tree's lock.
struct Node {
  using Children = std::map<std::u16string, std::unique_ptr<Node>>;

  /// A file where there is content, else a folder.
  explicit Node(std::shared_ptr<FileContent> fileContent);
  /// Takes what lies below apart level by level: a deep tree must not exhaust the stack.
  ~Node();
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  bool isFolder() const { return content == nullptr; }

  bool isWritable = true;
  std::shared_ptr<FileContent> content;
  // Of a folder:
  Children children;
  boost::posix_time::ptime lastModified = now();

 private:
  std::unique_ptr<Node> nextDying_;  ///< a list of those to be taken apart; made of the nodes, as memory may be short
};

}  // namespace foundation::storage::backend::memory::detail
