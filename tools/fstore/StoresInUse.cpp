#include <fstore/StoresInUse.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::StorageIRI;
using provider::StorageItem;

namespace {

/// Each may keep files open.
constexpr std::size_t most = 16;

std::size_t nesting(StorageIRI location) {
  std::size_t containers = 0;
  for (; location.hasInnerIRI(); location = location.getInnerIRI())
    ++containers;
  return containers;
}

}  // namespace

void StoresInUse::use(const StorageItem& item) {
  const StorageItem root(item, u"/");
  const auto known = std::find(roots_.begin(), roots_.end(), root);
  if (known != roots_.end()) {
    std::rotate(known, known + 1, roots_.end());
    return;
  }
  if (roots_.size() == most) {
    handOver(roots_.front());
    roots_.erase(roots_.begin());
  }
  roots_.push_back(root);
}

bool StoresInUse::handOver() {
  auto roots = std::exchange(roots_, {});
  // Writing an archive changes the one that it lies in.
  std::stable_sort(roots.begin(), roots.end(), [](const StorageItem& a, const StorageItem& b) {
    return nesting(a.getLocation()) > nesting(b.getLocation());
  });
  bool isWell = true;
  for (const auto& root : roots)
    isWell = handOver(root) && isWell;
  return isWell;
}

bool StoresInUse::handOver(const StorageItem& root) const {
  return report_.attempt(root.getLocation(), [&] { root.flushFilesystem(); });
}

}  // namespace fstore
