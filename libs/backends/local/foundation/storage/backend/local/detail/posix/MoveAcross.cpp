#include <foundation/storage/backend/local/detail/posix/MoveAcross.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/EntryCopy.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/FolderRemoval.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/provider/ScratchFiles.h>

#include <cerrno>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

Place placeOf(const FileSystem& files, const StorageIRI& location) {
  auto place = files.place(nativePath(location));
  if (!place)
    throw systemFailure(errno, "open", location);
  return std::move(*place);
}

/// Whatever it is: a folder with all that is in it, or the one name.
void removeEntry(const FileSystem& files, const StorageIRI& location) {
  const auto place = placeOf(files, location);
  if (sys().unlinkat(place.folder, place.name.c_str(), 0) == 0)
    return;
  const int error = errno;
  struct stat status;
  if (files.status(nativePath(location), Links::Keep, status) == -1 || !S_ISDIR(status.st_mode))
    throw systemFailure(error, "unlink", location);
  removeFolderTree(files, location, nativePath(location));
}

/// An entry that is removed again unless it is moved to its place.
class ScratchEntry {
 public:
  ScratchEntry(const FileSystem& files, const StorageIRI& destination)
      : files_(files),
        location_(destination.getParent(), provider::makeScratchName()),
        place_(placeOf(files, location_)) {}
  ScratchEntry(const ScratchEntry&) = delete;
  ScratchEntry& operator=(const ScratchEntry&) = delete;

  ~ScratchEntry() {
    try {
      if (exists_)
        removeEntry(files_, location_);
    } catch (...) {
      // The name says what it is. What has made the move fail is being thrown already.
    }
  }

  void fill(const StorageIRI& source) {
    exists_ = true;
    copyEntry(placeOf(files_, source), source, place_, location_);
  }

  void moveTo(const StorageIRI& destination, provider::ReplacementPolicy policy, MovedEntry kind) {
    const auto to = placeOf(files_, destination);
    const int result = preservesExisting(policy) ? renameExclusively(place_, to, kind) : renameOver(place_, to);
    if (result == -1)
      throw systemFailure(errno == EEXIST && !preservesExisting(policy) ? ENOTEMPTY : errno, "rename", destination);
    exists_ = false;
  }

 private:
  const FileSystem& files_;
  const StorageIRI location_;
  const Place place_;
  bool exists_ = false;
};

}  // namespace

void moveAcross(const FileSystem& files, const StorageIRI& source, const StorageIRI& destination,
                provider::ReplacementPolicy policy, MovedEntry kind) {
  struct stat status;
  if (preservesExisting(policy) && files.status(nativePath(destination), Links::Keep, status) == 0)
    throw systemFailure(EEXIST, "rename", destination);  // before anything is copied
  ScratchEntry scratch(files, destination);
  scratch.fill(source);
  scratch.moveTo(destination, policy, kind);
  removeEntry(files, source);
}

}  // namespace foundation::storage::backend::local::detail
