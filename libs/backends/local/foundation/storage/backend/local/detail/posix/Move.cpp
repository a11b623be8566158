#include <foundation/storage/backend/local/detail/posix/Move.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/MoveAcross.h>
#include <foundation/storage/backend/local/detail/posix/Status.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <cerrno>
#include <utility>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

/// One end of a move.
struct End {
  const StorageIRI& location;
  std::string path;
  Place place;
};

End endAt(const FileSystem& files, const StorageIRI& location) {
  auto path = nativePath(location);
  auto place = files.place(path);
  if (!place)
    throw systemFailure(errno, "rename", location);
  return {location, std::move(path), *std::move(place)};
}

/// @return the status of the entry itself
struct stat requireKind(const FileSystem& files, const End& source, MovedEntry kind) {
  struct stat own;
  if (files.status(source.path, Links::Keep, own) == -1)
    throw systemFailure(errno, "rename", source.location);
  // A link passes for what it leads to, and one that leads nowhere for a file.
  const auto status =
      S_ISLNK(own.st_mode) ? findStatusBehindLink(files, source.location, source.path).value_or(own) : own;
  const bool isFolder = S_ISDIR(status.st_mode);
  if (isFolder != (kind == MovedEntry::Folder))
    throw systemFailure(isFolder ? EISDIR : ENOTDIR, "rename", source.location);
  return own;
}

/// A folder (or a link to one) takes the place of nothing but a folder.
void requireFolderOrNothing(const FileSystem& files, const End& destination) {
  const auto status = findStatus(files, destination.location, destination.path, Links::Keep);
  if (status && !S_ISDIR(status->st_mode))
    throw systemFailure(ENOTDIR, "rename", destination.location);
}

/// Whether two names are different entries for one file: rename(2) leaves both of them then.
bool areHardLinks(const FileSystem& files, const struct stat& source, const std::string& from, const std::string& to) {
  struct stat destination;
  if (source.st_nlink < 2 || files.status(to, Links::Keep, destination) == -1 || !isSameFile(source, destination))
    return false;
  struct stat fromFolder, toFolder;
  const bool known = files.status(folderOf(from), Links::Follow, fromFolder) == 0 &&
                     files.status(folderOf(to), Links::Follow, toFolder) == 0;
  const bool sameName = from.substr(folderOf(from).size()) == to.substr(folderOf(to).size());
  return known && !(sameName && isSameFile(fromFolder, toFolder));
}

/// A hidden name that nobody has used before, and that no sweep takes for a scratch file: it may be a file's only
/// one for a moment.
std::string asideName() { return "." + boost::uuids::to_string(boost::uuids::random_generator()()) + ".moved"; }

/// For two names of one file, which rename(2) would leave both. To look and then remove `from` is no way: of
/// two opposite moves each could remove what the other relies on. Instead each takes its own name aside, and
/// removes nothing but that, and only after it has found the file at `to`. Of any number of such moves, the
/// one that found it last saw a name that can since have gone aside only in a move that gives it back.
///
/// Aside is in the folder of `from`: where a name could be changed once, it can be changed back.
void moveOntoOtherName(const End& source, const End& destination) {
  const auto name = asideName();
  const auto& from = source.place;
  const Place aside{{}, from.folder, folderOf(from.name) + name};
  if (renameOver(from, aside) == -1)
    throw systemFailure(errno, "rename", source.location);
  const bool isMoved = renameOver(aside, destination.place) == 0;
  if (isMoved && (sys().unlinkat(aside.folder, aside.name.c_str(), 0) == 0 || errno == ENOENT))
    return;
  const int error = errno;
  const bool isBack = renameExclusively(aside, from, MovedEntry::File) == 0;
  auto failure = systemFailure(error, isMoved ? "unlink" : "rename", destination.location);
  if (!isBack) {  // where `from` is taken by now, both are kept
    const StorageIRI left(source.location.getParent(), fl::i18n::to_ustring(name));
    addContext(failure, refusal(failure.getErrorCode(), left, u"The file is still there"));
  }
  throw failure;
}

/// rename(2) would put the link in the place of what it leads to, and so destroy that.
void requireNotBehindLink(const FileSystem& files, const struct stat& own, const End& source, const End& destination) {
  struct stat behind, replaced;
  if (S_ISLNK(own.st_mode) && files.status(source.path, Links::Follow, behind) == 0 &&
      files.status(destination.path, Links::Keep, replaced) == 0 && isSameFile(behind, replaced))
    throw refusal(provider::ErrorCode::InvalidLocation, destination.location, u"This is what the moved link leads to");
}

/// @return 0, or -1 with errno
int moveOver(const FileSystem& files, const struct stat& own, const End& from, const End& to, MovedEntry kind) {
  if (kind == MovedEntry::Folder)
    requireFolderOrNothing(files, to);
  requireNotBehindLink(files, own, from, to);
  if (kind == MovedEntry::File && areHardLinks(files, own, from.path, to.path)) {
    moveOntoOtherName(from, to);
    return 0;
  }
  return renameOver(from.place, to.place);
}

}  // namespace

void moveEntry(const Configuration& configuration, const StorageIRI& source, const StorageIRI& destination,
               provider::ReplacementPolicy policy, MovedEntry kind) {
  const auto& files = *configuration.files;
  const auto from = endAt(files, source);
  const auto to = endAt(files, destination);
  const auto own = requireKind(files, from, kind);
  const bool isExclusive = preservesExisting(policy);
  if ((isExclusive ? renameExclusively(from.place, to.place, kind) : moveOver(files, own, from, to, kind)) == 0)
    return;
  if (errno == EXDEV)
    return moveAcross(configuration, source, destination, policy, kind);
  // On some systems a folder that is not empty "exists".
  throw systemFailure(errno == EEXIST && !isExclusive ? ENOTEMPTY : errno, "rename", destination);
}

}  // namespace foundation::storage::backend::local::detail
