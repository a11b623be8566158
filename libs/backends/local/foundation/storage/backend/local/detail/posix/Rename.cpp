#include <foundation/storage/backend/local/detail/posix/Rename.h>

#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <cerrno>
#include <stdio.h>

namespace foundation::storage::backend::local::detail {
namespace {

int rename(const Place& from, const Place& to, unsigned flags) noexcept {
  return sys().renameat(from.folder, from.name.c_str(), to.folder, to.name.c_str(), flags);
}

int unlink(const Place& place) noexcept { return sys().unlinkat(place.folder, place.name.c_str(), 0); }

/// Whether link(2) is not to be had here, or not for this file, though rename(2) may be.
bool meansNoLinks(int error) { return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK; }

int moveFileWhereAbsent(const Place& from, const Place& to) noexcept {
  if (sys().linkat(from.folder, from.name.c_str(), to.folder, to.name.c_str()) == -1)
    return -1;
  if (unlink(from) == 0)
    return 0;
  const int error = errno;
  unlink(to);
  errno = error;
  return -1;
}

int moveWhereAbsent(const Place& from, const Place& to, MovedEntry kind) noexcept {
  if (kind == MovedEntry::File)
    if (const int result = moveFileWhereAbsent(from, to); result == 0 || !meansNoLinks(errno))
      return result;
  struct stat status;
  if (sys().fstatat(to.folder, to.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    errno = EEXIST;
    return -1;
  }
  return rename(from, to, 0);
}

}  // namespace

int renameOver(const Place& from, const Place& to) noexcept { return rename(from, to, 0); }

int renameExclusively(const Place& from, const Place& to, MovedEntry kind) noexcept {
  const int result = rename(from, to, RENAME_NOREPLACE);
  // EINVAL also says that a folder was to be moved into itself; the plain rename will say so again.
  return result == -1 && (errno == EINVAL || errno == ENOSYS) ? moveWhereAbsent(from, to, kind) : result;
}

}  // namespace foundation::storage::backend::local::detail
