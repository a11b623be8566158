#include <foundation/storage/backend/local/detail/posix/TransactionTarget.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/RealPath.h>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <string>
#include <sys/xattr.h>
#include <unistd.h>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

std::optional<struct stat> statusAt(const StorageIRI& location, const std::string& path, int flags) {
  struct stat status;
  if (fstatat(AT_FDCWD, path.c_str(), &status, flags) == 0)
    return status;
  if (errno != ENOENT)
    throw systemFailure(errno, "stat", location);
  return std::nullopt;
}

/// What the link at `path` says; nothing where there is no link.
std::optional<std::string> readLink(const StorageIRI& location, const std::string& path) {
  std::string text(PATH_MAX, '\0');  // none is longer (symlink(7))
  const auto size = readlink(path.c_str(), text.data(), text.size());
  if (size == -1 && (errno == EINVAL || errno == ENOENT))
    return std::nullopt;
  if (size == -1)
    throw systemFailure(errno, "readlink", location);
  text.resize(static_cast<std::size_t>(size));
  return text;
}

/// The path of what the link at `path` leads to in the end.
std::string followLinks(const StorageIRI& location, std::string path) {
  constexpr int maximum = 40;  // the system's own limit (path_resolution(7))
  for (int i = 0; i <= maximum; ++i) {
    auto next = readLink(location, path);
    if (!next)
      return path;
    if (next->ends_with('/'))
      throw refusal(provider::ErrorCode::InvalidLocation, location, u"The link says that it leads to a folder");
    path = next->starts_with('/') ? std::move(*next) : folderOf(path) + *next;
  }
  throw systemFailure(ELOOP, "readlink", location);
}

StorageIRI locationBehindLink(const StorageIRI& location, const std::string& path) {
  const auto target = followLinks(location, path);
  const auto name = target.substr(folderOf(target).size());
  const auto folder = realPath(location, folderOf(target));
  return toLocation(location, folder + (folder == "/" ? "" : "/") + name);
}

/// The links of proc(5) lead to files, not to names; following their texts may end elsewhere.
void requireSameFile(const StorageIRI& location, const struct stat& expected, const std::string& path) {
  const auto found = statusAt(location, path, AT_SYMLINK_NOFOLLOW);
  if (!found || found->st_dev != expected.st_dev || found->st_ino != expected.st_ino)
    throw refusal(provider::ErrorCode::InvalidLocation, location, u"The file behind this link has no name there");
}

bool hasAccessList(const std::string& path) {
  return getxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) > 0;
}

}  // namespace

TransactionTarget findTransactionTarget(const StorageIRI& location) {
  const auto path = nativePath(location);
  auto status = statusAt(location, path, AT_SYMLINK_NOFOLLOW);
  const bool isLink = status && S_ISLNK(status->st_mode);
  if (isLink)
    // The system has a say in which links are followed (proc(5), protected_symlinks).
    status = statusAt(location, path, 0);
  if (status && !S_ISREG(status->st_mode))
    throw refusal(provider::ErrorCode::InvalidLocation, location, u"Only a regular file can be replaced by a file");
  TransactionTarget target{isLink ? locationBehindLink(location, path) : location, std::nullopt};
  const auto targetPath = nativePath(target.location);
  if (status && isLink)
    requireSameFile(location, *status, targetPath);
  if (status)
    target.permissions = Permissions{status->st_mode & 0777, status->st_gid, hasAccessList(targetPath)};
  return target;
}

}  // namespace foundation::storage::backend::local::detail
