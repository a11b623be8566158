#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace foundation::storage::backend::support {

/// Visits what lies below a folder, a folder before what it holds; without recursion, as trees may be deep.
/// @tparam Folder  has `children`: a map from names to owning pointers of the same type
/// @param visit    gets the path relative to the folder, the name, the node, and how deep it lies: 0 for what the
///                 folder itself holds
template <class Folder, class Visit>
void visitBelow(Folder& folder, bool isRecursive, const Visit& visit) {
  struct Level {
    std::size_t pathSize;
    decltype(folder.children.begin()) next, end;
  };
  std::u16string path;  // of the folder being visited, with '/'
  std::vector<Level> levels{{0, folder.children.begin(), folder.children.end()}};
  while (!levels.empty()) {
    auto& level = levels.back();
    path.resize(level.pathSize);
    if (level.next == level.end) {
      levels.pop_back();
      continue;
    }
    auto& [name, node] = *level.next++;
    path += name;
    visit(path, name, *node, levels.size() - 1);
    if (isRecursive && !node->children.empty()) {
      path += u'/';
      levels.push_back({path.size(), node->children.begin(), node->children.end()});
    }
  }
}

}  // namespace foundation::storage::backend::support
