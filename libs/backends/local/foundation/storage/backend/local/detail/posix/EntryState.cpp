#include <foundation/storage/backend/local/detail/posix/EntryState.h>

#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

Examined examine(int folder, const char* path) noexcept {
  struct stat status;
  if (sys().fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW) == -1)
    return {meansNothingThere(errno) ? Presence::Absent : Presence::Unknown, {}};
  const bool isLink = S_ISLNK(status.st_mode);
  struct stat target;
  if (isLink && sys().fstatat(folder, path, &target, 0) == 0)
    status = target;
  const auto type = S_ISDIR(status.st_mode) ? events::EntryType::Folder : events::EntryType::File;
  return {Presence::Present, {type, isLink, toNumber(status.st_mtim)}};
}

bool meansNothingThere(int error) noexcept { return error == ENOENT || error == ENOTDIR || error == ELOOP; }

}  // namespace foundation::storage::backend::local::detail
