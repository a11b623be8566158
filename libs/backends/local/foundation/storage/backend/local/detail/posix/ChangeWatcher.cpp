#include <foundation/storage/backend/local/detail/posix/ChangeWatcher.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/EntryState.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/SubscriptionFailure.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/backend/support/Log.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <system_error>
#include <unistd.h>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

constexpr std::size_t bufferSize = std::size_t{64} * 1024;
constexpr std::uint32_t lostMask = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr std::uint32_t movedMask = IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;

[[noreturn]] void fail(const char* call) { throw std::system_error(errno, std::generic_category(), call); }

/// A look that fails, for want of memory or of descriptors say, is made up for when the next events come.
template <class Action>
void attempt(WatchedTree& tree, const Action& action) {
  try {
    action();
  } catch (...) {
    support::logCaughtFailure("Error in checking for changes.");
    tree.setUncertain();
  }
}

}  // namespace

void ChangeWatcher::watchFolder(const StorageIRI& folder, const provider::ChangeCallback& callback, const Kinds& kinds,
                                provider::RecursiveFileWatching recursion) {
  const bool isDirect = recursion == provider::RecursiveFileWatching::DirectOnly;
  try {
    subscribe({nativePath(folder), {}}, isDirect ? Reach::Entries : Reach::Subtree,
              ChangePublisher(folder, callback, kinds));
  } catch (const std::exception&) {
    refuseSubscription(folder);
  }
}

void ChangeWatcher::watchFile(const StorageIRI& file, const provider::ChangeCallback& callback, const Kinds& kinds) {
  try {
    const auto path = nativePath(file);
    const auto found = examine(AT_FDCWD, path.c_str());
    if (found.presence == Presence::Present && found.state.type == events::EntryType::Folder)
      throw systemFailure(EISDIR, "stat", file);
    const auto folder = folderOf(path);
    subscribe({withoutTrailingSlashes(folder), path.substr(folder.size())}, Reach::OneFile,
              ChangePublisher(file.getParent(), file, callback, kinds));
  } catch (const std::exception&) {
    refuseSubscription(file);
  }
}

void ChangeWatcher::subscribe(Key key, Reach reach, ChangePublisher publisher) {
  std::unique_ptr<WatchedTree> gone;  // destroyed without the lock
  const std::scoped_lock lock(mutex_);
  const auto known = trees_.find(key);
  if (known != trees_.end() && !known->second->isGone())
    return;
  start(publisher.watched());
  auto tree = std::make_unique<WatchedTree>(*inotify_, std::move(publisher), key.first, reach, key.second, ending_);
  tree->begin();
  gone = std::exchange(trees_[std::move(key)], std::move(tree));
}

void ChangeWatcher::start(const StorageIRI& location) {
  if (thread_.joinable())
    return;
  Descriptor wakeUp(sys().eventfd(EFD_CLOEXEC));
  if (!wakeUp.isOpen())
    throw systemFailure(errno, "eventfd", location);
  buffer_.resize(bufferSize);
  inotify_.emplace(location);
  wakeUp_ = std::move(wakeUp);
  thread_ = std::thread([this] { run(); });
}

void ChangeWatcher::stop(const StorageIRI& folder) {
  std::string path;
  try {
    path = nativePath(folder);
  } catch (const provider::Exception&) {
    return;  // what cannot be watched is not watched
  }
  std::vector<std::unique_ptr<WatchedTree>> stopped;  // and with them their callbacks, destroyed without the lock
  const std::scoped_lock lock(mutex_);
  for (auto at = trees_.lower_bound({path, {}}); at != trees_.end() && at->first.first == path;) {
    at->second->leaveWatches();
    stopped.push_back(std::move(at->second));
    at = trees_.erase(at);
  }
}

void ChangeWatcher::end() noexcept {
  if (!thread_.joinable())
    return;
  ending_ = true;
  constexpr std::uint64_t one = 1;
  sys().write(wakeUp_.get(), &one, sizeof one);
  thread_.join();
  inotify_->close();  // with all watches, which is quicker than one by one
  trees_.clear();
}

void ChangeWatcher::run() noexcept {
  while (!ending_) {
    try {
      awaitEvents();
      handleEvents();
    } catch (...) {
      support::logCaughtFailure("Error in checking for changes.");
      doubtAll();
    }
  }
}

void ChangeWatcher::awaitEvents() {
  pollfd waiting[] = {{inotify_->descriptor(), POLLIN, 0}, {wakeUp_.get(), POLLIN, 0}};
  constexpr int secondInMilliseconds = 1000;
  const int timeout = mustLookAgain_ ? secondInMilliseconds : -1;
  if (sys().poll(waiting, std::size(waiting), timeout) == -1)
    fail("poll");
}

void ChangeWatcher::handleEvents() {
  const auto size = sys().read(inotify_->descriptor(), buffer_.data(), buffer_.size());
  if (size == -1 && errno != EAGAIN)
    fail("read");
  checkTrees(Which::Uncertain);
  Looked looked;
  for (std::ptrdiff_t at = 0; at < size && !ending_;) {
    // The kernel lays its records out aligned.
    const auto& event = *reinterpret_cast<const inotify_event*>(static_cast<const void*>(buffer_.data() + at));
    at += static_cast<std::ptrdiff_t>(sizeof event + event.len);
    if ((event.mask & IN_Q_OVERFLOW) != 0)
      checkTrees(Which::All);
    else
      handle(event, looked);
  }
}

void ChangeWatcher::handle(const inotify_event& event, Looked& looked) {
  const std::string_view name = event.len == 0 ? std::string_view() : std::string_view(event.name);
  const auto depth = (event.mask & movedMask) != 0 ? Depth::All : Depth::New;
  const Hints hints{.isPlace = (event.mask & lostMask) != 0,
                    .isTime = looked.emplace(event.wd, std::string_view(), Depth::Entry).second,
                    .isEntry = !name.empty() && looked.emplace(event.wd, name, depth).second,
                    .depth = depth};
  if (!hints.isPlace && !hints.isTime && !hints.isEntry)
    return;
  const std::scoped_lock lock(mutex_);
  bool isAnyGone = false;
  for (const auto& user : inotify_->usersOf(event.wd)) {
    if (!inotify_->isUsedBy(event.wd, user))  // a look for another user has ended it
      continue;
    attempt(*user.tree, [&] { handle(event, user, hints); });
    mustLookAgain_ = mustLookAgain_ || user.tree->isUncertain();
    isAnyGone |= user.tree->isGone();
  }
  if (isAnyGone)
    leaveGone();
}

void ChangeWatcher::handle(const inotify_event& event, const WatchUser& user, const Hints& hints) {
  if (hints.isPlace)
    user.tree->checkPlace(user.folder);
  if (hints.isTime && user.folder != nullptr && inotify_->isUsedBy(event.wd, user))
    user.tree->checkTime(*user.folder);
  if (hints.isEntry && inotify_->isUsedBy(event.wd, user))
    user.tree->checkEntry(user.folder, event.name, hints.depth);
}

void ChangeWatcher::checkTrees(Which which) {
  const std::scoped_lock lock(mutex_);
  for (const auto& [key, tree] : trees_)
    if (which == Which::All || tree->isUncertain())
      attempt(*tree, [&tree = *tree] { tree.checkAll(); });
  leaveGone();
  mustLookAgain_ =
      std::any_of(trees_.begin(), trees_.end(), [](const auto& tree) { return tree.second->isUncertain(); });
}

void ChangeWatcher::doubtAll() {
  const std::scoped_lock lock(mutex_);
  for (const auto& [key, tree] : trees_)
    tree->setUncertain();
  mustLookAgain_ = true;
}

/// A subscription stays, with its callback, until somebody stops it: the callback may hold the last of a provider,
/// which this thread could not end.
void ChangeWatcher::leaveGone() {
  for (const auto& [key, tree] : trees_)
    if (tree->isGone())
      tree->leaveWatches();
}

}  // namespace foundation::storage::backend::local::detail
