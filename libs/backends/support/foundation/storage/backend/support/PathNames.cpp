#include <foundation/storage/backend/support/PathNames.h>

#include <string_view>

namespace foundation::storage::backend::support {

std::vector<std::u16string> pathNames(std::u16string_view path) {
  std::vector<std::u16string> names;
  while (!path.empty()) {
    const auto end = path.find(u'/');
    if (end > 0)
      names.emplace_back(path.substr(0, end));
    path.remove_prefix(end == path.npos ? path.size() : end + 1);
  }
  return names;
}

std::vector<std::u16string> pathNames(const provider::StorageIRI& location) {
  return pathNames(std::u16string_view(location.getResolvedPath()));
}

}  // namespace foundation::storage::backend::support
