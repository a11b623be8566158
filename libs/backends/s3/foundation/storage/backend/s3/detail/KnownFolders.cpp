#include <foundation/storage/backend/s3/detail/KnownFolders.h>

#include <foundation/storage/backend/s3/detail/Place.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::s3::detail {

namespace {

/// The name of a folder in that which holds it; not to be found there where names on the way are empty.
std::string nameIn(const std::string& parent, std::string_view prefix) {
  return std::string(prefix.substr(parent.size(), prefix.size() - parent.size() - 1));
}

}  // namespace

KnownFolders::KnownFolders(std::function<Time()> clock) : clock_(std::move(clock)) {}

std::uint64_t KnownFolders::changes() const {
  const std::scoped_lock lock(mutex_);
  return changes_;
}

void KnownFolders::see(const std::string& prefix, Sight sight, std::uint64_t changes) {
  const std::scoped_lock lock(mutex_);
  if (changes == changes_)
    put(prefix, std::move(sight));
}

bool KnownFolders::knows(const std::string& prefix) const {
  const std::scoped_lock lock(mutex_);
  return find(prefix) != nullptr;
}

bool KnownFolders::knowsMissing(const std::string& prefix) const {
  const auto parent = parentPrefixOf(prefix);
  const auto name = nameIn(parent, prefix);
  const std::scoped_lock lock(mutex_);
  const auto* folder = find(parent);
  return folder != nullptr && folder->sight.isWhole && name.find('/') == name.npos &&
         !folder->sight.names.contains(name);
}

void KnownFolders::written(const std::string& key) {
  const auto folder = parentPrefixOf(key);
  const std::scoped_lock lock(mutex_);
  if (key.ends_with('/'))
    addToParent(key);
  if (find(folder) != nullptr)
    folders_.find(folder)->second.end = clock_() + lifetime;
}

void KnownFolders::fileRemoved(const std::string& key) {
  const std::scoped_lock lock(mutex_);
  if (key.ends_with('/'))
    drop(key);
  for (auto folder = parentPrefixOf(key); !folder.empty(); folder = parentPrefixOf(folder)) {
    const auto* known = find(folder);
    if (known != nullptr && known->sight.isMarked)
      return;
    ++changes_;
    folders_.erase(folder);
  }
}

void KnownFolders::created(const std::string& prefix) {
  const std::scoped_lock lock(mutex_);
  addToParent(prefix);
  put(prefix, {.isMarked = true, .isWhole = true});
}

void KnownFolders::appeared(const std::string& prefix) {
  const std::scoped_lock lock(mutex_);
  drop(prefix);
  addToParent(prefix);
}

void KnownFolders::forget(const std::string& prefix) {
  const std::scoped_lock lock(mutex_);
  drop(prefix);
  for (auto folder = parentPrefixOf(prefix); !folder.empty(); folder = parentPrefixOf(folder))
    if (const auto known = folders_.find(folder); known != folders_.end() && !known->second.sight.isMarked)
      folders_.erase(known);
}

void KnownFolders::invalidate(const std::string& prefix) {
  forget(prefix);
  const std::scoped_lock lock(mutex_);
  ++changes_;
  if (const auto parent = folders_.find(parentPrefixOf(prefix)); parent != folders_.end())
    folders_.erase(parent);  // it knows which names no folder has
}

const KnownFolders::Folder* KnownFolders::find(std::string_view prefix) const {
  const auto folder = folders_.find(prefix);
  return folder == folders_.end() || folder->second.end <= clock_() ? nullptr : &folder->second;
}

void KnownFolders::put(const std::string& prefix, Sight sight) {
  if (folders_.size() >= mostFolders && !folders_.contains(prefix))
    folders_.erase(std::min_element(folders_.begin(), folders_.end(), [](const auto& one, const auto& other) {
      return one.second.end < other.second.end;
    }));
  folders_.insert_or_assign(prefix, Folder{std::move(sight), clock_() + lifetime});
}

void KnownFolders::addToParent(const std::string& prefix) {
  ++changes_;
  const auto parent = parentPrefixOf(prefix);
  const auto folder = folders_.find(parent);
  if (folder == folders_.end())
    return;
  auto& sight = folder->second.sight;
  sight.names.insert(nameIn(parent, prefix));
  if (sight.names.size() > mostNames)
    sight = {.isMarked = sight.isMarked};
}

void KnownFolders::drop(std::string_view prefix) {
  ++changes_;
  const auto first = folders_.lower_bound(prefix);
  auto last = first;
  while (last != folders_.end() && last->first.starts_with(prefix))
    ++last;
  folders_.erase(first, last);
}

}  // namespace foundation::storage::backend::s3::detail
