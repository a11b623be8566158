#include <fstore/Facts.h>
#include <fstore/TreeWalk.h>

#include <algorithm>

namespace fstore {

using foundation::storage::provider::FolderEntry;
using foundation::storage::provider::StorageItem;

void TreeWalk::run(const StorageItem& folder) {
  levels_.clear();
  if (maxDepth_ > 0)
    enter(folder, u"");
  while (!levels_.empty()) {
    auto& level = levels_.back();
    if (level.next == level.entries.size())
      levels_.pop_back();
    else
      show(FolderEntry(std::move(level.entries[level.next++])));
  }
}

void TreeWalk::enter(const StorageItem& folder, std::u16string path) {
  Level level{folder, std::move(path), {}};
  // What was found before a failure is shown nevertheless.
  report_.attempt(folder.getLocation(), [&] {
    for (const auto listing = folder.listAll(u""); listing->hasNext();) {
      listing->next();
      auto entry = listing->current();
      if (selection_(entry))
        level.entries.push_back(std::move(entry));
    }
  });
  std::sort(level.entries.begin(), level.entries.end(),
            [](const FolderEntry& a, const FolderEntry& b) { return a.getName() < b.getName(); });
  levels_.push_back(std::move(level));
}

void TreeWalk::show(const FolderEntry& entry) {
  const auto& level = levels_.back();
  const StorageItem item(level.folder, entry.getName());
  auto path = level.path + entry.getName();
  visit_({item, entry, path, levels_.size(), level.next == level.entries.size()});
  if (!entry.isFile() && !isLink(entry).value_or(false) && levels_.size() < maxDepth_)
    enter(item, std::move(path += u'/'));
}

}  // namespace fstore
