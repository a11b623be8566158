#include <foundation/storage/backend/memory/detail/Node.h>

#include <utility>

namespace foundation::storage::backend::memory::detail {

Node::Node(std::shared_ptr<FileContent> fileContent) : content(std::move(fileContent)) {}

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

}  // namespace foundation::storage::backend::memory::detail
