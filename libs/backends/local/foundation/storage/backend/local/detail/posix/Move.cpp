#include <foundation/storage/backend/local/detail/posix/Move.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/Status.h>

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <cerrno>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

struct stat linkStatusOf(const StorageIRI& location, const std::string& path) {
  struct stat status;
  if (lstat(path.c_str(), &status) == -1)
    throw systemFailure(errno, "rename", location);
  return status;
}

/// @return the status of the entry itself
struct stat requireKind(const StorageIRI& source, const std::string& path, MovedEntry kind) {
  const auto own = linkStatusOf(source, path);
  // A link passes for what it leads to, and one that leads nowhere for a file.
  const auto status = S_ISLNK(own.st_mode) ? findStatus(source, path).value_or(own) : own;
  const bool isFolder = S_ISDIR(status.st_mode);
  if (isFolder != (kind == MovedEntry::Folder))
    throw systemFailure(isFolder ? EISDIR : ENOTDIR, "rename", source);
  return own;
}

/// A folder (or a link to one) takes the place of nothing but a folder.
void requireFolderOrNothing(const StorageIRI& destination, const std::string& path) {
  if (const auto status = findLinkStatus(destination, path); status && !S_ISDIR(status->st_mode))
    throw systemFailure(ENOTDIR, "rename", destination);
}

bool isSameFile(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

/// Whether two names are different entries for one file: rename(2) leaves both of them then.
bool areHardLinks(const struct stat& source, const std::string& from, const std::string& to) {
  struct stat destination;
  if (source.st_nlink < 2 || lstat(to.c_str(), &destination) == -1 || !isSameFile(source, destination))
    return false;
  struct stat fromFolder, toFolder;
  const bool known = stat(folderOf(from).c_str(), &fromFolder) == 0 && stat(folderOf(to).c_str(), &toFolder) == 0;
  const bool sameName = from.substr(folderOf(from).size()) == to.substr(folderOf(to).size());
  return known && !(sameName && isSameFile(fromFolder, toFolder));
}

/// Whether link(2) is not to be had here, or not for this file, though rename(2) may be.
bool meansNoLinks(int error) { return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK; }

int moveFileWhereAbsent(const std::string& from, const std::string& to) {
  if (link(from.c_str(), to.c_str()) == -1)
    return -1;
  if (unlink(from.c_str()) == 0)
    return 0;
  const int error = errno;
  unlink(to.c_str());
  errno = error;
  return -1;
}

/// For file systems without an exclusive rename. A file can mostly be linked exclusively; what somebody puts in
/// the place of `from` before that is unlinked goes with it. A folder cannot, so there is a moment between the
/// look and the rename in which somebody may create the destination: an empty folder, or a file, would then be
/// replaced.
int moveWhereAbsent(const std::string& from, const std::string& to, MovedEntry kind) {
  if (kind == MovedEntry::File)
    if (const int result = moveFileWhereAbsent(from, to); result == 0 || !meansNoLinks(errno))
      return result;
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

/// A hidden name that nobody has used before, and that no sweep takes for a scratch file: it may be a file's only
/// one for a moment.
std::string asideName(const std::string& folder) {
  return folder + "." + boost::uuids::to_string(boost::uuids::random_generator()()) + ".moved";
}

/// For two names of one file, which rename(2) would leave both. To look and then remove `from` is no way: of
/// two opposite moves each could remove what the other relies on. Instead each takes its own name aside, and
/// removes nothing but that, and only after it has found the file at `to`. Of any number of such moves, the
/// one that found it last saw a name that can since have gone aside only in a move that gives it back.
///
/// Aside is in the folder of `from`: where a name could be changed once, it can be changed back.
void moveOntoOtherName(const StorageIRI& source, const std::string& from, const StorageIRI& destination,
                       const std::string& to) {
  const auto aside = asideName(folderOf(from));
  if (rename(from.c_str(), aside.c_str()) == -1)
    throw systemFailure(errno, "rename", source);
  const bool isMoved = rename(aside.c_str(), to.c_str()) == 0;
  if (isMoved && (unlink(aside.c_str()) == 0 || errno == ENOENT))
    return;
  const int error = errno;
  const bool isBack = renameExclusively(aside, from, MovedEntry::File) == 0;
  auto failure = systemFailure(error, isMoved ? "unlink" : "rename", destination);
  if (!isBack)  // where `from` is taken by now, both are kept
    addContext(failure, refusal(failure.getErrorCode(), toLocation(source, aside), u"The file is still there"));
  throw failure;
}

/// rename(2) would put the link in the place of what it leads to, and so destroy that.
void requireNotBehindLink(const struct stat& source, const StorageIRI& destination, const std::string& from,
                          const std::string& to) {
  struct stat behind, replaced;
  if (S_ISLNK(source.st_mode) && stat(from.c_str(), &behind) == 0 && lstat(to.c_str(), &replaced) == 0 &&
      isSameFile(behind, replaced))
    throw refusal(provider::ErrorCode::InvalidLocation, destination, u"This is what the moved link leads to");
}

}  // namespace

void moveEntry(const StorageIRI& source, const StorageIRI& destination, provider::ReplacementPolicy policy,
               MovedEntry kind) {
  const auto from = nativePath(source);
  const auto to = nativePath(destination);
  const auto status = requireKind(source, from, kind);
  if (kind == MovedEntry::Folder && !preservesExisting(policy))
    requireFolderOrNothing(destination, to);
  if (!preservesExisting(policy))
    requireNotBehindLink(status, destination, from, to);
  if (preservesExisting(policy)) {
    if (renameExclusively(from, to, kind) == -1)
      throw systemFailure(errno, "rename", destination);
  } else if (kind == MovedEntry::File && areHardLinks(status, from, to)) {
    moveOntoOtherName(source, from, destination, to);
  } else if (rename(from.c_str(), to.c_str()) == -1) {
    // On some systems a folder that is not empty "exists".
    throw systemFailure(errno == EEXIST ? ENOTEMPTY : errno, "rename", destination);
  }
}

}  // namespace foundation::storage::backend::local::detail
