#include <foundation/storage/backend/local/detail/posix/Status.h>

#include <foundation/storage/backend/local/detail/posix/Failure.h>

#include <cerrno>
#include <fcntl.h>

namespace foundation::storage::backend::local::detail {
namespace {

/// Whether an error number says that there is nothing, and can be nothing, at a path.
bool meansAbsent(int error) { return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG || error == ELOOP; }

std::optional<struct stat> find(const provider::StorageIRI& location, const std::string& path, int flags) {
  struct stat status;
  if (fstatat(AT_FDCWD, path.c_str(), &status, flags) == 0)
    return status;
  if (!meansAbsent(errno))
    throw systemFailure(errno, "stat", location);
  return std::nullopt;
}

}  // namespace

std::optional<struct stat> findStatus(const provider::StorageIRI& location, const std::string& path) {
  return find(location, path, 0);
}

std::optional<struct stat> findLinkStatus(const provider::StorageIRI& location, const std::string& path) {
  return find(location, path, AT_SYMLINK_NOFOLLOW);
}

struct stat requireStatus(const provider::StorageIRI& location, const std::string& path) {
  struct stat status;
  if (fstatat(AT_FDCWD, path.c_str(), &status, 0) == -1)
    throw systemFailure(errno, "stat", location);
  return status;
}

}  // namespace foundation::storage::backend::local::detail
