#include <foundation/storage/backend/local/detail/posix/FolderRemoval.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/FolderReader.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <cerrno>
#include <dirent.h>
#include <optional>
#include <utility>
#include <vector>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

constexpr int asFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr std::size_t maximumOpen = 64;  ///< folders, of a tree that may be deeper than there are descriptors

/// A folder on the way from the top of the tree to where the removal is.
struct Level {
  std::string name;
  std::optional<FolderReader> reader;  ///< none where too many are open below
  dev_t device;
  ino_t inode;
  bool hasRemoved = false;  ///< something, since it was read from the beginning
};

class FolderRemoval {
 public:
  FolderRemoval(const StorageIRI& location, Obstacles obstacles) : location_(location), obstacles_(obstacles) {}

  /// Removes all that is in an open folder.
  void empty(Descriptor folder) {
    descend({}, std::move(folder));
    while (!levels_.empty())
      if (!removeNext())
        leave();
  }

 private:
  int folder() const { return levels_.back().reader->descriptor(); }

  void descend(std::string name, Descriptor opened) {
    struct stat status;
    if (sys().fstat(opened.get(), &status) == -1)
      fail(errno, "fstat", name);
    if (obstacles_ == Obstacles::Remove)
      sys().fchmod(opened.get(), 0700);
    levels_.push_back({std::move(name), FolderReader(std::move(opened), location_), status.st_dev, status.st_ino});
    if (levels_.size() > maximumOpen)
      levels_[levels_.size() - 1 - maximumOpen].reader.reset();
  }

  /// @return false at the end of the folder
  bool removeNext() {
    const RawEntry* entry = levels_.back().reader->read();
    if (entry == nullptr)
      return false;
    if (entry->type == DT_DIR || !removeFile(entry->name))
      enter(entry->name);
    return true;
  }

  /// @return false where it is a folder
  bool removeFile(const char* name) {
    if (sys().unlinkat(folder(), name, 0) == -1 && errno != ENOENT) {
      const int error = errno;  // of a folder: EISDIR, or EPERM by POSIX
      if (error == EISDIR || (error == EPERM && isFolder(name)))
        return false;
      fail(error, "unlink", name);
    }
    levels_.back().hasRemoved = true;
    return true;
  }

  bool isFolder(const char* name) const {
    struct stat status;
    return sys().fstatat(folder(), name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
  }

  void enter(std::string name) {
    // Where it may not be read, it may be empty all the same.
    if (sys().unlinkat(folder(), name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT) {
      levels_.back().hasRemoved = true;
      return;
    }
    const int error = errno;
    if (error == ENOTDIR && removeFile(name.c_str()))
      return;  // it was replaced since it was listed
    if (error != ENOTEMPTY && error != EEXIST)
      fail(error, "rmdir", name);
    Descriptor opened(sys().openat(folder(), name.c_str(), asFolder, 0));
    if (opened.isOpen())
      descend(std::move(name), std::move(opened));
    else if (errno != ENOENT)
      fail(errno, "open", name);
  }

  /// Goes up from a folder whose end is reached, and removes it.
  void leave() {
    const auto left = std::move(levels_.back());
    levels_.pop_back();
    if (levels_.empty())
      return;
    if (!levels_.back().reader)
      reopenFrom(left.reader->descriptor());
    if (sys().unlinkat(folder(), left.name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT) {
      levels_.back().hasRemoved = true;
      return;
    }
    const int error = errno;
    // Some file systems lose their place in a folder that changes while it is read; others may be adding to it.
    if ((error != ENOTEMPTY && error != EEXIST) || !left.hasRemoved)
      fail(error == EEXIST ? ENOTEMPTY : error, "rmdir", left.name);
    enter(left.name);
  }

  /// The way up is the one that the removal came by, even if somebody has moved the folder meanwhile.
  void reopenFrom(int child) {
    auto& level = levels_.back();
    Descriptor parent(sys().openat(child, "..", asFolder, 0));
    struct stat status;
    if (!parent.isOpen() || sys().fstat(parent.get(), &status) == -1)
      fail(errno, "open", "");
    if (status.st_dev != level.device || status.st_ino != level.inode)
      fail(EBUSY, "open", "");
    level.reader.emplace(std::move(parent), location_);
    level.hasRemoved = false;
  }

  [[noreturn]] void fail(int error, const char* call, const std::string& name) const {
    std::string path;
    for (std::size_t i = 1; i < levels_.size(); ++i)
      path += levels_[i].name + "/";
    path += name;
    if (path.ends_with('/'))
      path.pop_back();
    throw systemFailure(error, call, path.empty() ? location_ : StorageIRI(location_, fl::i18n::to_ustring(path)));
  }

  const StorageIRI& location_;
  const Obstacles obstacles_;
  std::vector<Level> levels_;
};

/// A folder that could not be removed in the end (rmdir(2): the root, and "." or ".." as the last name) is not to be
/// emptied either.
void requireOwnName(const Place& place, const StorageIRI& location) {
  const auto name = place.name.substr(place.name.rfind('/') + 1);
  if (name.empty() || name == "." || name == "..")
    throw systemFailure(name.empty() ? EBUSY : EINVAL, "rmdir", location);
}

}  // namespace

void removeFolderTree(const FileSystem& files, const StorageIRI& location, const std::string& path,
                      Obstacles obstacles) {
  const auto place = files.place(path);
  if (!place)
    throw systemFailure(errno, "open", location);
  requireOwnName(*place, location);
  Descriptor folder(sys().openat(place->folder, place->name.c_str(), asFolder, 0));
  if (!folder.isOpen())
    throw systemFailure(errno, "open", location);
  FolderRemoval(location, obstacles).empty(std::move(folder));
  if (sys().unlinkat(place->folder, place->name.c_str(), AT_REMOVEDIR) == -1)
    throw systemFailure(errno == EEXIST ? ENOTEMPTY : errno, "rmdir", location);
}

}  // namespace foundation::storage::backend::local::detail
