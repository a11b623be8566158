#include <foundation/storage/backend/local/detail/posix/TransactionTarget.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/Status.h>
#include <foundation/storage/backend/local/detail/posix/Xattrs.h>

#include <cerrno>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

std::optional<struct stat> statusAt(const FileSystem& files, const StorageIRI& location, const std::string& path,
                                    Links links) {
  struct stat status;
  if (files.status(path, links, status) == 0)
    return status;
  if (errno != ENOENT)
    throw systemFailure(errno, "stat", location);
  return std::nullopt;
}

std::string pathBehindLink(const FileSystem& files, const StorageIRI& location, const std::string& path) {
  auto target = files.target(path);
  if (!target)
    throw systemFailure(errno, "readlink", location);
  return *std::move(target);
}

/// The links of proc(5) lead to files, not to names; following their texts may end elsewhere.
void requireSameFile(const FileSystem& files, const StorageIRI& location, const struct stat& expected,
                     const std::string& path) {
  const auto found = statusAt(files, location, path, Links::Keep);
  if (!found || !isSameFile(*found, expected))
    throw refusal(provider::ErrorCode::InvalidLocation, location, u"The file behind this link has no name there");
}

std::vector<std::string> namesOfAttributes(const FileSystem& files, const StorageIRI& location,
                                           const std::string& path) {
  const auto reached = files.reach(path, Links::Keep);
  if (!reached)
    throw systemFailure(errno, "open", location);
  return attributeNames(reached->path, location);
}

}  // namespace

TransactionTarget findTransactionTarget(const FileSystem& files, const StorageIRI& location) {
  auto path = nativePath(location);
  auto status = statusAt(files, location, path, Links::Keep);
  const bool isLink = status && S_ISLNK(status->st_mode);
  if (isLink)
    // The system has a say in which links are followed (proc(5), protected_symlinks).
    status = statusAt(files, location, path, Links::Follow);
  if (status && !S_ISREG(status->st_mode))
    throw refusal(provider::ErrorCode::InvalidLocation, location, u"Only a regular file can be replaced by a file");
  if (isLink)
    path = pathBehindLink(files, location, path);
  TransactionTarget target{isLink ? toLocation(location, path) : location, std::move(path), std::nullopt};
  if (status && isLink)
    requireSameFile(files, location, *status, target.path);
  if (status)
    target.replaced = Replaced{*status, namesOfAttributes(files, location, target.path)};
  return target;
}

}  // namespace foundation::storage::backend::local::detail
