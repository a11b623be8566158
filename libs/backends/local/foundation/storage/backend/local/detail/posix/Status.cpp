#include <foundation/storage/backend/local/detail/posix/Status.h>

#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/OutOfRoot.h>

#include <cerrno>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

/// Whether an error number says that there is nothing, and can be nothing, at a path.
bool meansAbsent(int error) { return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG || error == ELOOP; }

}  // namespace

std::optional<struct stat> findStatus(const FileSystem& files, const StorageIRI& location, const std::string& path,
                                      Links links) {
  struct stat status;
  if (files.status(path, links, status) == 0)
    return status;
  if (!meansAbsent(errno))
    throw systemFailure(errno, "stat", location);
  return std::nullopt;
}

struct stat requireStatus(const FileSystem& files, const StorageIRI& location, const std::string& path) {
  struct stat status;
  if (files.status(path, Links::Follow, status) == -1)
    throw systemFailure(errno, "stat", location);
  return status;
}

std::optional<struct stat> findStatusBehindLink(const FileSystem& files, const StorageIRI& location,
                                                const std::string& path) {
  struct stat status;
  if (files.status(path, Links::Follow, status) == 0)
    return S_ISLNK(status.st_mode) ? std::nullopt : std::optional(status);
  if (!meansAbsent(errno) && errno != leadsOutOfRoot)
    throw systemFailure(errno, "stat", location);
  return std::nullopt;
}

}  // namespace foundation::storage::backend::local::detail
