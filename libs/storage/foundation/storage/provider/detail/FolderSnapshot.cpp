#include <foundation/storage/provider/detail/FolderSnapshot.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace foundation::storage::provider::detail {

void FolderSnapshot::begin() { reset(); }

FolderSnapshot::Entry* FolderSnapshot::find(std::u16string_view name) {
  if (next_ < entries_.size() && !entries_[next_].isSeen() && entries_[next_].name == name)
    return &entries_[next_++];
  isInOrder_ = false;
  if (index_.empty())
    for (std::size_t at = 0; at < entries_.size(); ++at)
      index_.emplace(entries_[at].name, at);
  const auto found = index_.find(name);
  if (found == index_.end())
    return nullptr;
  next_ = found->second + 1;
  return &entries_[found->second];
}

void FolderSnapshot::see(Entry& entry, events::EntryType type, const Time& lastModified) {
  entry.type = type;
  entry.lastModified = lastModified;
  entry.order = ++seen_;
}

void FolderSnapshot::add(const std::u16string& name, events::EntryType type, const Time& lastModified) {
  if (addedNames_.contains(name))
    return;
  added_.push_back({name, lastModified, ++seen_, type});
  addedNames_.insert(added_.back().name);
}

std::vector<const FolderSnapshot::Entry*> FolderSnapshot::missing() const {
  std::vector<const Entry*> found;
  for (const auto& entry : entries_)
    if (!entry.isSeen())
      found.push_back(&entry);
  return found;
}

void FolderSnapshot::finish() {
  entries_.reserve(entries_.size() + added_.size());
  std::erase_if(entries_, [](const Entry& entry) { return !entry.isSeen(); });
  entries_.insert(entries_.end(), std::move_iterator(added_.begin()), std::move_iterator(added_.end()));
  if (!isInOrder_)
    sortBySight();
  reset();
}

void FolderSnapshot::sortBySight() {
  std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) { return a.order < b.order; });
}

void FolderSnapshot::abandon() noexcept {
  std::erase_if(entries_, [](const Entry& entry) { return entry.isSeen(); });
  reset();
}

void FolderSnapshot::reset() noexcept {
  for (auto& entry : entries_)
    entry.order = 0;
  next_ = 0;
  seen_ = 0;
  isInOrder_ = true;
  index_ = {};
  addedNames_ = {};
  added_ = {};
}

}  // namespace foundation::storage::provider::detail
