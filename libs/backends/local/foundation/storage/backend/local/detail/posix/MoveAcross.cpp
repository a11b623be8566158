#include <foundation/storage/backend/local/detail/posix/MoveAcross.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/EntryCopy.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/FolderRemoval.h>
#include <foundation/storage/backend/local/detail/posix/Places.h>
#include <foundation/storage/backend/local/detail/posix/Status.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/backend/support/Log.h>
#include <foundation/storage/provider/ScratchFiles.h>

#include <cerrno>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

/// Removes what is there: a folder with all that is in it, or the one name.
void removeEntry(const FileSystem& files, const StorageIRI& location, const struct stat& status, Obstacles obstacles) {
  if (S_ISDIR(status.st_mode))
    return removeFolderTree(files, location, nativePath(location), obstacles);
  const auto place = requirePlace(files, location, "unlink");
  if (sys().unlinkat(place.folder, place.name.c_str(), 0) == -1)
    throw systemFailure(errno, "unlink", location);
}

/// An entry that is removed again unless it is moved to its place.
class ScratchEntry {
 public:
  ScratchEntry(const FileSystem& files, const StorageIRI& destination)
      : files_(files),
        location_(destination.getParent(), provider::makeScratchName()),
        place_(requirePlace(files, location_, "rename")) {}
  ScratchEntry(const ScratchEntry&) = delete;
  ScratchEntry& operator=(const ScratchEntry&) = delete;

  ~ScratchEntry() {
    try {
      struct stat status;
      if (isMoved_)
        return;
      if (files_.status(nativePath(location_), Links::Keep, status) == 0)
        removeEntry(files_, location_, status, Obstacles::Remove);
      else if (errno != ENOENT)
        throw systemFailure(errno, "stat", location_);
    } catch (...) {
      support::logCaughtFailure("What a failed move has copied could not be removed.");
    }
  }

  const Place& place() const noexcept { return place_; }

  void moveTo(const StorageIRI& destination, provider::ReplacementPolicy policy, MovedEntry kind) {
    const auto to = requirePlace(files_, destination, "rename");
    const bool isExclusive = preservesExisting(policy);
    if ((isExclusive ? renameExclusively(place_, to, kind) : renameOver(place_, to)) == -1)
      throw systemFailure(errno == EEXIST && !isExclusive ? ENOTEMPTY : errno, "rename", destination);
    isMoved_ = true;
  }

 private:
  const FileSystem& files_;
  const StorageIRI location_;
  const Place place_;
  bool isMoved_ = false;
};

Descriptor openFolderOf(const FileSystem& files, const StorageIRI& location) {
  auto folder = files.open(folderOf(nativePath(location)), O_RDONLY | O_DIRECTORY);
  if (!folder.isOpen())
    throw systemFailure(errno, "open", location);
  return folder;
}

bool isSameTime(const timespec& a, const timespec& b) { return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec; }

/// Whether nothing has been done to what was moved since `before`. Of what is in a folder that says nothing.
bool isUnchanged(const struct stat& before, const struct stat& now) {
  return isSameFile(before, now) &&
         (S_ISDIR(before.st_mode) || (before.st_size == now.st_size && isSameTime(before.st_mtim, now.st_mtim) &&
                                      isSameTime(before.st_ctim, now.st_ctim)));
}

struct stat statusAt(const FileSystem& files, const StorageIRI& location) {
  struct stat status;
  if (files.status(nativePath(location), Links::Keep, status) == -1)
    throw systemFailure(errno, "rename", location);
  return status;
}

}  // namespace

void moveAcross(const Configuration& configuration, const StorageIRI& source, const StorageIRI& destination,
                provider::ReplacementPolicy policy, MovedEntry kind) {
  const auto& files = *configuration.files;
  const auto moved = statusAt(files, source);
  struct stat status;
  const bool isThere = files.status(nativePath(destination), Links::Keep, status) == 0;
  if (isThere && preservesExisting(policy))
    throw systemFailure(EEXIST, "rename", destination);  // before anything is copied
  if (isThere && isSameFile(moved, status)) {
    if (moved.st_nlink > 1 && !S_ISDIR(moved.st_mode))
      throw systemFailure(EXDEV, "rename", destination);
    return;  // the one name it has
  }
  if (!destination.hasParent())
    throw systemFailure(EBUSY, "rename", destination);
  ScratchEntry scratch(files, destination);
  copyEntry(configuration, requirePlace(files, source, "rename"), source, scratch.place(), destination);
  const auto folder = configuration.isDurable ? openFolderOf(files, destination) : Descriptor();
  scratch.moveTo(destination, policy, kind);
  if (folder.isOpen() && sys().fsync(folder.get()) == -1 && errno != EINVAL)
    throw systemFailure(errno, "fsync", destination);
  if (!isUnchanged(moved, statusAt(files, source)))
    throw refusal(provider::ErrorCode::ResourceInUse, source, u"It was changed while it was moved; both are there");
  removeEntry(files, source, moved, Obstacles::Respect);
}

}  // namespace foundation::storage::backend::local::detail
