#include <foundation/storage/backend/local/detail/posix/Move.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/Status.h>

#include <cerrno>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

void requireKind(const StorageIRI& source, const std::string& path, MovedEntry kind) {
  const auto own = findLinkStatus(source, path);
  if (!own)
    throw systemFailure(ENOENT, "rename", source);
  // A link passes for what it leads to, and one that leads nowhere for a file.
  const auto status = S_ISLNK(own->st_mode) ? findStatus(source, path).value_or(*own) : *own;
  const bool isFolder = S_ISDIR(status.st_mode);
  if (isFolder != (kind == MovedEntry::Folder))
    throw systemFailure(isFolder ? EISDIR : ENOTDIR, "rename", source);
}

/// For file systems without an exclusive rename. A file can be linked exclusively; a folder cannot, so
/// there is a moment between the look and the rename in which somebody may create the destination: an
/// empty folder would then be replaced, anything else make the rename fail.
int moveWhereAbsent(const std::string& from, const std::string& to, MovedEntry kind) {
  if (kind == MovedEntry::File)
    return link(from.c_str(), to.c_str()) == -1 ? -1 : unlink(from.c_str());
  struct stat status;
  if (lstat(to.c_str(), &status) == 0) {
    errno = EEXIST;
    return -1;
  }
  return rename(from.c_str(), to.c_str());
}

int renameExclusively(const std::string& from, const std::string& to, MovedEntry kind) {
  const int result = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
  // EINVAL also says that a folder was to be moved into itself; the plain rename will say so again.
  return result == -1 && (errno == EINVAL || errno == ENOSYS) ? moveWhereAbsent(from, to, kind) : result;
}

}  // namespace

void moveEntry(const StorageIRI& source, const StorageIRI& destination, provider::ReplacementPolicy policy,
               MovedEntry kind) {
  const auto from = nativePath(source);
  const auto to = nativePath(destination);
  requireKind(source, from, kind);
  const int result = preservesExisting(policy) ? renameExclusively(from, to, kind) : rename(from.c_str(), to.c_str());
  if (result == -1)
    throw systemFailure(errno, "rename", destination);
}

}  // namespace foundation::storage::backend::local::detail
