// [program]
#include <foundation/storage/registry/DefaultRegistry.h>

#include <iostream>

int main() try {
  const auto registry = foundation::storage::registry::makeDefaultRegistry();
  const auto folder = registry.item(u"file:///etc");
  for (const auto entries = folder.listAll(u""); entries->hasNext();) {
    entries->next();
    std::cout << foundation::storage::provider::StorageItem(folder, entries->current().getName()).getLocation() << '\n';
  }
} catch (const std::exception& failure) {
  std::cerr << failure.what() << '\n';
  return 1;
}
// [program]
