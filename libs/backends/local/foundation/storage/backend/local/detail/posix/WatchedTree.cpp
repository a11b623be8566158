#include <foundation/storage/backend/local/detail/posix/WatchedTree.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/SubscriptionFailure.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <utility>

namespace foundation::storage::backend::local::detail {

using events::EntryType;
using events::Kind;

namespace {

constexpr std::uint32_t namesMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
constexpr std::uint32_t contentMask = IN_MODIFY | IN_CLOSE_WRITE;
constexpr std::uint32_t placeMask = IN_DELETE_SELF | IN_MOVE_SELF;

std::string withSlash(std::string path) {
  if (path.back() != '/')
    path.push_back('/');
  return path;
}

/// Whether an error says that a folder cannot be read as it is now; anything else is a failure.
bool isUnreadable(int error) {
  return meansNothingThere(error) || error == EACCES || error == EPERM || error == ENAMETOOLONG;
}

}  // namespace

WatchedTree::WatchedTree(Inotify& inotify, ChangePublisher publisher, std::string path, Reach reach, std::string file,
                         const std::atomic<bool>& ending)
    : inotify_(inotify),
      publisher_(std::move(publisher)),
      path_(std::move(path)),
      reach_(reach),
      file_(std::move(file)),
      ending_(ending),
      wantsTimes_(publisher_.wants(Kind::EntryModified)),
      mask_(namesMask | IN_ATTRIB | (wantsTimes_ ? contentMask : 0)) {}

WatchedTree::~WatchedTree() { leaveWatches(); }

void WatchedTree::leaveWatches() noexcept {
  if (root_.watch == -1 && above_.empty())
    return;  // without a walk through all entries: this is asked of a tree that is gone again and again
  leaveAll(root_);
  for (const int watch : above_)
    inotify_.leave(watch, {this, nullptr});
  above_.clear();
}

void WatchedTree::leaveAll(WatchedFolder& folder) noexcept {
  inotify_.leave(std::exchange(folder.watch, -1), {this, &folder});
  for (const auto& [name, entry] : folder.entries)
    if (entry.folder)
      leaveAll(*entry.folder);
}

void WatchedTree::begin() {
  watchAbove();
  watchItself();
  if (const auto itself = examine(AT_FDCWD, path_.c_str()); itself.presence == Presence::Present)
    rootTime_ = itself.state.time.value_or(0);
  scan(root_, Depth::New);
  isStarting_ = false;
}

/// The kernel does not say in a folder that one above it is moved away, nor, while somebody keeps it open, that it is
/// removed. From the outside in, so that a folder moved meanwhile is noticed by the next step at the latest.
void WatchedTree::watchAbove() {
  for (auto end = path_.find('/'); end != std::string::npos; end = path_.find('/', end + 1)) {
    const bool isParent = path_.find('/', end + 1) == std::string::npos;
    const auto folder = path_.substr(0, end == 0 ? 1 : end);
    const auto mask = IN_MOVE_SELF | (isParent ? IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO : 0u);
    const int watch = inotify_.add(folder, mask | IN_ONLYDIR);
    if (watch == -1 && isUnreadable(errno))
      continue;
    if (watch == -1)
      throw watchFailure(errno, "inotify_add_watch", publisher_.watched());
    above_.reserve(above_.size() + 1);
    inotify_.join(watch, {this, nullptr});
    above_.push_back(watch);
  }
}

void WatchedTree::watchItself() {
  const int watch = inotify_.add(path_, mask_ | placeMask | IN_ONLYDIR);
  if (watch == -1)
    throw watchFailure(errno, "inotify_add_watch", publisher_.watched());
  setWatch(root_, watch);
}

void WatchedTree::checkPlace(WatchedFolder* folder) {
  if (folder != nullptr && folder->parent != nullptr)
    return look(*folder->parent, std::string(*folder->name), Depth::New);
  if (isGone_)
    return;
  const int watch = inotify_.add(path_, mask_ | placeMask | IN_ONLYDIR);
  // Without one, it is another folder that would take a watch more than there can be.
  if (watch == -1 ? meansNothingThere(errno) || errno == ENOSPC : watch != root_.watch) {
    inotify_.leave(watch, {});
    return end();
  }
  watchAboveAnew();
  checkTime(root_);
  scan(root_, Depth::All);
}

/// Other folders may have come to the places above, though the watched one is where it was.
void WatchedTree::watchAboveAnew() {
  const auto before = std::exchange(above_, {});
  try {
    watchAbove();
  } catch (...) {
    above_.insert(above_.end(), before.begin(), before.end());
    throw;
  }
  for (const int watch : before)
    inotify_.leave(watch, {this, nullptr});
}

void WatchedTree::end() {
  isGone_ = true;
  if (reach_ == Reach::OneFile && !root_.entries.empty())
    remove(root_, root_.entries.begin());
  if (!isMuted())
    publisher_.publish(Kind::WatchedFolderRemoved);
}

void WatchedTree::checkTime(WatchedFolder& folder) {
  if (folder.parent != nullptr) {
    if (wantsTimes_)
      look(*folder.parent, std::string(*folder.name), Depth::Entry);
    return;
  }
  if (isGone_)
    return;
  if (root_.isStale)
    scan(root_, Depth::All);
  if (reach_ == Reach::OneFile || !publisher_.wants(Kind::WatchedFolderModified))
    return;
  const auto itself = examine(AT_FDCWD, path_.c_str());
  if (itself.presence != Presence::Present || itself.state.time == rootTime_)
    return;
  rootTime_ = itself.state.time.value_or(0);
  if (!isMuted())
    publisher_.publish(Kind::WatchedFolderModified);
}

void WatchedTree::checkEntry(WatchedFolder* folder, const std::string& name, Depth depth) {
  if (folder != nullptr)
    look(*folder, name, depth);
  else if (depth == Depth::All && path_.ends_with("/" + name))
    checkPlace(nullptr);
}

void WatchedTree::checkAll() {
  isUncertain_ = false;
  checkPlace(nullptr);
}

/// Compares one entry with what was last published of it.
void WatchedTree::look(WatchedFolder& folder, const std::string& name, Depth depth) {
  if (isGone_ || folder.isLeaf || !publisher_.wantsEntries() || (reach_ == Reach::OneFile && name != file_))
    return;
  const auto found = examine(AT_FDCWD, (nativePathOf(folder) + name).c_str());
  if (found.presence == Presence::Unknown && reach_ != Reach::OneFile)
    return scan(folder, Depth::New);  // a listing may still say the names
  if (found.presence == Presence::Present)
    update(folder, name, found.state);
  const auto at = folder.entries.find(name);
  if (at == folder.entries.end())
    return;
  if (found.presence == Presence::Absent)
    remove(folder, at);
  else if (depth != Depth::Entry || !at->second.folder)
    follow(folder, at->first, at->second, depth);
}

/// Compares all entries of a folder, of its new subfolders and, if wanted, of all others.
void WatchedTree::scan(WatchedFolder& folder, Depth depth) {
  if (!publisher_.wantsEntries())
    return;
  if (reach_ == Reach::OneFile)
    return look(folder, file_, Depth::New);
  list(folder);
  for (auto& [name, entry] : folder.entries)
    follow(folder, name, entry, depth);
}

void WatchedTree::list(WatchedFolder& folder) {
  auto descriptor = open(folder);
  folder.isStale = !descriptor.isOpen();
  if (folder.isStale)
    return;
  for (auto& [name, entry] : folder.entries)
    entry.isListed = false;
  FolderReader reader(std::move(descriptor), publisher_.watched());
  while (const RawEntry* entry = reader.read()) {
    if (ending_.load(std::memory_order_relaxed))
      return;
    if (const auto found = examineListed(reader.descriptor(), *entry); found.presence == Presence::Present)
      update(folder, entry->name, found.state);
  }
  sweep(folder, reader.descriptor());
}

Descriptor WatchedTree::open(const WatchedFolder& folder) const {
  const bool isRoot = folder.parent == nullptr;
  const auto path = isRoot ? path_ : nativePathOf(folder);
  const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (isRoot ? 0 : O_NOFOLLOW);
  Descriptor opened(sys().openat(AT_FDCWD, withoutTrailingSlashes(path).c_str(), flags, 0));
  if (!opened.isOpen() && ((isRoot && isStarting_) || !isUnreadable(errno)))
    throw systemFailure(errno, "open", publisher_.watched());
  return opened;
}

Examined WatchedTree::examineListed(int folder, const RawEntry& entry) const {
  const auto type = entry.type == DT_DIR ? EntryType::Folder : EntryType::File;
  const Examined asListed{Presence::Present, {type, entry.type == DT_LNK, std::nullopt}};
  if (!wantsTimes_ && entry.type != DT_LNK && entry.type != DT_UNKNOWN)
    return asListed;
  const auto found = examine(folder, entry.name);
  return found.presence == Presence::Unknown ? asListed : found;
}

/// Removes what a listing has not shown.
void WatchedTree::sweep(WatchedFolder& folder, int descriptor) {
  for (auto at = folder.entries.begin(); at != folder.entries.end();) {
    const auto current = at++;
    if (current->second.isListed)
      continue;
    // A listing may miss what is renamed meanwhile.
    if (const auto found = examine(descriptor, current->first.c_str()); found.presence == Presence::Present)
      update(folder, current->first, found.state);
    else
      remove(folder, current);
  }
}

void WatchedTree::update(WatchedFolder& folder, const std::string& name, const EntryState& state) {
  const auto [at, isNew] = folder.entries.try_emplace(name);
  auto& entry = at->second;
  const auto time = wantsTimes_ ? state.time.value_or(entry.time) : 0;
  const bool isModified = !isNew && entry.time != time;
  entry.time = time;
  entry.type = state.type;
  entry.isLink = state.isLink;
  entry.isListed = true;
  if (entry.folder && followingOf(entry) != (entry.folder->isLeaf ? Following::Itself : Following::Content))
    forgetBelow(entry);
  if (isNew || isModified)
    publish(isNew ? Kind::EntryAdded : Kind::EntryModified, folder, name, entry.type);
}

void WatchedTree::remove(WatchedFolder& folder, WatchedFolder::Entries::iterator at) {
  forgetBelow(at->second);
  publish(Kind::EntryRemoved, folder, at->first, at->second.type);
  folder.entries.erase(at);
}

void WatchedTree::forgetBelow(WatchedEntry& entry) {
  if (!entry.folder)
    return;
  auto& entries = entry.folder->entries;
  while (!entries.empty())
    remove(*entry.folder, std::prev(entries.end()));
  inotify_.leave(entry.folder->watch, {this, entry.folder.get()});
  entry.folder.reset();
}

WatchedTree::Following WatchedTree::followingOf(const WatchedEntry& entry) const noexcept {
  if (reach_ == Reach::Subtree && entry.type == EntryType::Folder && !entry.isLink)
    return Following::Content;
  return wantsTimes_ && (entry.isLink || entry.type == EntryType::Folder) ? Following::Itself : Following::Not;
}

/// Watches an entry by itself where its parent's watch does not say everything, and looks into it where it is new.
void WatchedTree::follow(WatchedFolder& folder, const std::string& name, WatchedEntry& entry, Depth depth) {
  const auto following = followingOf(entry);
  if (following == Following::Not)
    return;
  bool isUnwatchable = false;
  const int watch = addWatch(entry, nativePathOf(folder) + name, isUnwatchable);
  if (watch == -1 && !isUnwatchable)
    return;  // gone, which its parent's watch will tell, or not to be read
  bool isNew = !entry.folder;
  if (isNew)
    entry.folder.reset(new WatchedFolder{&folder, &name, -1, following == Following::Itself, false, {}});
  isNew |= setWatch(*entry.folder, watch);
  if (isNew)
    updateAgain(folder, name);
  if (entry.folder && !entry.folder->isLeaf && (isNew || depth == Depth::All || entry.folder->isStale))
    scan(*entry.folder, depth);
}

/// An entry may have changed between the last look and the beginning of its own watch.
void WatchedTree::updateAgain(WatchedFolder& folder, const std::string& name) {
  if (!wantsTimes_)
    return;
  if (const auto found = examine(AT_FDCWD, (nativePathOf(folder) + name).c_str()); found.presence == Presence::Present)
    update(folder, name, found.state);
}

/// @param isUnwatchable  set where there is something to watch but the kernel can hold no more watches
/// @return -1 without a watch
int WatchedTree::addWatch(const WatchedEntry& entry, const std::string& path, bool& isUnwatchable) {
  const auto ofTarget = namesMask | contentMask | IN_ATTRIB | placeMask;
  const auto ofFolder = (followingOf(entry) == Following::Content ? mask_ : namesMask) | IN_ONLYDIR | IN_DONT_FOLLOW;
  const int watch = inotify_.add(path, entry.isLink ? ofTarget : ofFolder);
  if (watch != -1 || isUnreadable(errno))
    return watch;
  isUnwatchable = errno == ENOSPC;
  const auto failure = watchFailure(errno, "inotify_add_watch", publisher_.watched());
  if (isStarting_ || !isUnwatchable)
    throw failure;
  return -1;
}

/// @return whether it is another one
bool WatchedTree::setWatch(WatchedFolder& folder, int watch) {
  if (folder.watch == watch)
    return false;
  if (watch >= 0)
    inotify_.join(watch, {this, &folder});
  if (folder.watch >= 0)
    inotify_.leave(folder.watch, {this, &folder});
  folder.watch = watch;
  return true;
}

void WatchedTree::publish(Kind kind, const WatchedFolder& folder, const std::string& name, EntryType type) const {
  if (!isMuted() && publisher_.wants(kind))
    publisher_.publish(kind, relativePath(folder) + name, type);
}

std::string WatchedTree::relativePath(const WatchedFolder& folder) const {
  return folder.parent == nullptr ? std::string() : relativePath(*folder.parent) + *folder.name + "/";
}

std::string WatchedTree::nativePathOf(const WatchedFolder& folder) const {
  return withSlash(path_) + relativePath(folder);
}

}  // namespace foundation::storage::backend::local::detail
