#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

namespace foundation::storage::backend::support {

/// The part of a tree's node that holds what lies below it:
///
///     struct Node : support::TreeNode<Node> { ... };
///
/// A tree of any depth is destroyed without exhausting the stack, and without taking memory.
template <class Node>
class TreeNode {
 public:
  /// Nodes by their names; none is null.
  using Children = std::map<std::u16string, std::unique_ptr<Node>>;

  TreeNode() = default;
  TreeNode(const TreeNode&) = delete;
  TreeNode& operator=(const TreeNode&) = delete;

  Children children;  ///< by their names

 protected:
  /// Takes what lies below apart level by level.
  ~TreeNode() {
    std::unique_ptr<Node> dying;
    takeApart(children, dying);
    while (dying) {
      const auto node = std::move(dying);
      dying = std::move(node->nextDying_);
      takeApart(node->children, dying);
    }
  }

 private:
  static void takeApart(Children& of, std::unique_ptr<Node>& dying) {
    for (auto& [name, child] : of)
      if (!child->children.empty()) {
        child->nextDying_ = std::move(dying);
        dying = std::move(child);
      }
    of.clear();
  }

  std::unique_ptr<Node> nextDying_;  ///< a list of those to be taken apart; made of the nodes, as memory may be short
};

}  // namespace foundation::storage::backend::support
