#include <foundation/storage/backend/archive/detail/Node.h>

#include <utility>

namespace foundation::storage::backend::archive::detail {

Node::Node(EntryKind nodeKind) : kind(nodeKind), permissions(nodeKind == EntryKind::Folder ? 0755 : 0644) {}

Node::~Node() {
  std::unique_ptr<Node> dying;
  const auto takeApart = [&dying](Children& of) {
    for (auto& [name, child] : of)
      if (!child->children.empty()) {
        child->nextDying_ = std::move(dying);
        dying = std::move(child);
      }
    of.clear();
  };
  takeApart(children);
  while (dying) {
    const auto node = std::move(dying);
    dying = std::move(node->nextDying_);
    takeApart(node->children);
  }
}

}  // namespace foundation::storage::backend::archive::detail
