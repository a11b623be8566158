#include <foundation/storage/backend/local/detail/posix/Inotify.h>

#include <foundation/storage/backend/local/detail/posix/SubscriptionFailure.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <algorithm>
#include <cerrno>
#include <sys/inotify.h>

namespace foundation::storage::backend::local::detail {

Inotify::Inotify(const provider::StorageIRI& location) : descriptor_(sys().inotifyInit(IN_NONBLOCK | IN_CLOEXEC)) {
  if (!descriptor_.isOpen())
    throw watchFailure(errno, "inotify_init1", location);
}

int Inotify::add(const std::string& path, std::uint32_t mask) noexcept {
  return sys().inotifyAddWatch(descriptor_.get(), path.c_str(), mask | IN_MASK_ADD);
}

void Inotify::join(int watch, const WatchUser& user) { users_[watch].push_back(user); }

void Inotify::leave(int watch, const WatchUser& user) noexcept {
  if (watch == -1)
    return;
  if (const auto at = users_.find(watch); at != users_.end()) {
    auto& users = at->second;
    if (const auto own = std::find(users.begin(), users.end(), user); own != users.end())
      users.erase(own);
    if (!users.empty())
      return;
    users_.erase(at);
  }
  if (descriptor_.isOpen())
    sys().inotifyRemoveWatch(descriptor_.get(), watch);
}

std::vector<WatchUser> Inotify::usersOf(int watch) const {
  const auto at = users_.find(watch);
  return at == users_.end() ? std::vector<WatchUser>() : at->second;
}

bool Inotify::isUsedBy(int watch, const WatchUser& user) const noexcept {
  const auto at = users_.find(watch);
  return at != users_.end() && std::find(at->second.begin(), at->second.end(), user) != at->second.end();
}

}  // namespace foundation::storage::backend::local::detail
