#include <foundation/storage/backend/local/detail/posix/EntryCopy.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/ContentCopy.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/FolderReader.h>
#include <foundation/storage/backend/local/detail/posix/Permissions.h>
#include <foundation/storage/backend/local/detail/posix/Status.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/backend/local/detail/posix/Xattrs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string>
#include <unistd.h>
#include <utility>

namespace foundation::storage::backend::local::detail {

using provider::StorageIRI;

namespace {

/// One end of the copy of one entry.
struct End {
  int folder;
  const char* name;
  const StorageIRI& location;
};

Descriptor open(const End& end, int flags, mode_t mode = 0) {
  Descriptor opened(sys().openat(end.folder, end.name, flags | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY, mode));
  if (!opened.isOpen())
    throw systemFailure(errno, "open", end.location);
  return opened;
}

std::array<timespec, 2> timesOf(const struct stat& status) { return {status.st_atim, status.st_mtim}; }

class EntryCopy {
 public:
  /// @param destinationFolder  where the copy is made: no folder that is copied
  EntryCopy(bool isDurable, const struct stat& destinationFolder)
      : isDurable_(isDurable), destinationFolder_(destinationFolder) {}

  void copy(const End& from, const End& to) const {
    struct stat status;
    if (sys().fstatat(from.folder, from.name, &status, AT_SYMLINK_NOFOLLOW) == -1)
      throw systemFailure(errno, "stat", from.location);
    if (S_ISREG(status.st_mode))
      copyFile(from, to);
    else if (S_ISDIR(status.st_mode))
      copyFolder(from, to);
    else if (S_ISLNK(status.st_mode))
      copyLink(from, status, to);
    else
      copySpecial(status, to);
  }

 private:
  void copyFile(const End& from, const End& to) const {
    const auto source = open(from, O_RDONLY | O_NONBLOCK);
    const auto status = statusOf(source, from);
    if (!S_ISREG(status.st_mode))
      throw refusal(provider::ErrorCode::ResourceInUse, from.location, u"It was replaced while it was moved");
    auto copied = open(to, O_WRONLY | O_CREAT | O_EXCL, 0600);
    ContentCopy({source.get(), from.location}, status, {copied.get(), to.location}).run();
    finish(source, status, std::move(copied), from, to);
  }

  void copyFolder(const End& from, const End& to) const {
    const auto source = open(from, O_RDONLY | O_DIRECTORY);
    const auto status = statusOf(source, from);
    if (isSameFile(status, destinationFolder_))
      throw refusal(provider::ErrorCode::InvalidLocation, to.location, u"A folder cannot be moved into itself");
    if (sys().mkdirat(to.folder, to.name, 0700) == -1)
      throw systemFailure(errno, "mkdir", to.location);
    auto copied = open(to, O_RDONLY | O_DIRECTORY);
    FolderReader reader(open({source.get(), ".", from.location}, O_RDONLY | O_DIRECTORY), from.location);
    while (const RawEntry* entry = reader.read()) {
      const std::string name = entry->name;
      const auto wide = fl::i18n::to_ustring(name);
      copy({reader.descriptor(), name.c_str(), StorageIRI(from.location, wide)},
           {copied.get(), name.c_str(), StorageIRI(to.location, wide)});
    }
    finish(source, status, std::move(copied), from, to);
  }

  static void copyLink(const End& from, const struct stat& status, const End& to) {
    std::string text(PATH_MAX, '\0');  // none is longer (symlink(7))
    const auto size = sys().readlinkat(from.folder, from.name, text.data(), text.size());
    if (size == -1)
      throw systemFailure(errno, "readlink", from.location);
    text.resize(static_cast<std::size_t>(size));
    if (sys().symlinkat(text.c_str(), to.folder, to.name) == -1)
      throw systemFailure(errno, "symlink", to.location);
    sys().fchownat(to.folder, to.name, status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW);  // as far as it may be
    sys().utimensat(to.folder, to.name, timesOf(status).data(), AT_SYMLINK_NOFOLLOW);       // some have no times
  }

  static void copySpecial(const struct stat& status, const End& to) {
    if (sys().mknodat(to.folder, to.name, (status.st_mode & S_IFMT) | 0600, status.st_rdev) == -1)
      throw systemFailure(errno, "mknod", to.location);
    const Descriptor copied(sys().openat(to.folder, to.name, O_PATH | O_NOFOLLOW | O_CLOEXEC, 0));
    const auto made = copied.isOpen() ? statusOf(copied, to) : status;
    if (!copied.isOpen() || (made.st_mode & S_IFMT) != (status.st_mode & S_IFMT))
      throw systemFailure(copied.isOpen() ? EBUSY : errno, "open", to.location);
    const auto path = pathOf(copied);
    const bool isOwners = sys().fchownat(AT_FDCWD, path.c_str(), status.st_uid, status.st_gid, 0) == 0;
    const bool hasGroup = isOwners || made.st_gid == status.st_gid;
    if (sys().chmod(path.c_str(), modeFor(status.st_mode, hasGroup && !hasAccessList(path))) == -1)
      throw systemFailure(errno, "chmod", to.location);
    if (sys().utimensat(AT_FDCWD, path.c_str(), timesOf(status).data(), 0) == -1)
      throw systemFailure(errno, "utimensat", to.location);
  }

  static std::string pathOf(const Descriptor& file) { return "/proc/self/fd/" + std::to_string(file.get()); }

  static bool hasAccessList(const std::string& path) {
    return sys().getxattr(path.c_str(), accessListName.data(), nullptr, 0) > 0;
  }

  static struct stat statusOf(const Descriptor& file, const End& end) {
    struct stat status;
    if (sys().fstat(file.get(), &status) == -1)
      throw systemFailure(errno, "fstat", end.location);
    return status;
  }

  /// What is left to do for a file or folder once it has its content.
  void finish(const Descriptor& source, const struct stat& status, Descriptor copied, const End& from,
              const End& to) const {
    if (!dropAccessList(copied.get(), accessListName) ||
        (S_ISDIR(status.st_mode) && !dropAccessList(copied.get(), defaultListName)))
      throw systemFailure(errno, "fremovexattr", to.location);
    const auto path = pathOf(source);
    const auto names = attributeNames(path, from.location);
    // While it may be written to: afterwards its owner's attributes could not be set.
    copyAttributes(path, names, copied.get(), Attributes::All, Unsupported::LeaveOut, to.location);
    const auto ownership = takeOwner(copied.get(), status);
    const bool hasList = std::find(names.begin(), names.end(), accessListName) != names.end();
    const mode_t special = ownership == Ownership::Whole ? status.st_mode & 07000 : 0;
    const mode_t mode = special | modeFor(status.st_mode, ownership != Ownership::None && !hasList);
    if (sys().fchmod(copied.get(), mode) == -1)
      throw systemFailure(errno, "fchmod", to.location);
    if (ownership != Ownership::None)
      copyAttributes(path, names, copied.get(), Attributes::AccessLists, Unsupported::LeaveOut, to.location);
    if (sys().futimens(copied.get(), timesOf(status).data()) == -1)
      throw systemFailure(errno, "futimens", to.location);
    if (isDurable_ && sys().fsync(copied.get()) == -1 && errno != EINVAL)
      throw systemFailure(errno, "fsync", to.location);
    if (const int error = copied.close())
      throw systemFailure(error, "close", to.location);
  }

  const bool isDurable_;
  const struct stat destinationFolder_;
};

}  // namespace

void copyEntry(const Configuration& configuration, const Place& from, const StorageIRI& source, const Place& to,
               const StorageIRI& destination) {
  struct stat folder;
  if (configuration.files->status(folderOf(nativePath(destination)), Links::Follow, folder) == -1)
    throw systemFailure(errno, "stat", destination);
  EntryCopy(configuration.isDurable, folder)
      .copy({from.folder, from.name.c_str(), source}, {to.folder, to.name.c_str(), destination});
}

}  // namespace foundation::storage::backend::local::detail
