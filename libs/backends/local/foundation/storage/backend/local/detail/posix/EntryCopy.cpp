#include <foundation/storage/backend/local/detail/posix/EntryCopy.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/posix/ContentCopy.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/FolderReader.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/backend/local/detail/posix/Xattrs.h>

#include <array>
#include <cerrno>
#include <climits>
#include <string>
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

void copyOne(const End& from, const End& to);

Descriptor open(const End& end, int flags, mode_t mode = 0) {
  const int all = flags | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY;
  Descriptor opened(sys().openat(end.folder, end.name, all, mode));
  if (!opened.isOpen())
    throw systemFailure(errno, "open", end.location);
  return opened;
}

std::array<timespec, 2> timesOf(const struct stat& status) { return {status.st_atim, status.st_mtim}; }

/// The owner, which most programs may not give away. Without it nobody is to gain another user's or group's rights.
mode_t takeOwner(int file, const struct stat& status) {
  if (sys().fchown(file, status.st_uid, status.st_gid) == 0)
    return status.st_mode & 07777;
  const bool hasGroup = sys().fchown(file, static_cast<uid_t>(-1), status.st_gid) == 0;
  return status.st_mode & (hasGroup ? 0777 : 0707);
}

/// What is left to do for a file or folder once it has its content.
void finish(const Descriptor& source, const struct stat& status, Descriptor copy, const End& from, const End& to) {
  const auto mode = takeOwner(copy.get(), status);
  if (sys().fchmod(copy.get(), mode) == -1)
    throw systemFailure(errno, "fchmod", to.location);
  const auto path = "/proc/self/fd/" + std::to_string(source.get());
  copyAttributes(path, attributeNames(path, from.location), copy.get(), AccessList::Copy, to.location);
  if (sys().futimens(copy.get(), timesOf(status).data()) == -1)
    throw systemFailure(errno, "futimens", to.location);
  if (const int error = copy.close())
    throw systemFailure(error, "close", to.location);
}

void copyFile(const End& from, const End& to) {
  const auto source = open(from, O_RDONLY | O_NONBLOCK);
  struct stat status;
  if (sys().fstat(source.get(), &status) == -1)
    throw systemFailure(errno, "fstat", from.location);
  auto copy = open(to, O_WRONLY | O_CREAT | O_EXCL, 0600);
  ContentCopy({source.get(), from.location}, status, {copy.get(), to.location}).run();
  finish(source, status, std::move(copy), from, to);
}

void copyFolder(const End& from, const struct stat& status, const End& to) {
  const auto source = open(from, O_RDONLY | O_DIRECTORY);
  if (sys().mkdirat(to.folder, to.name, 0700) == -1)
    throw systemFailure(errno, "mkdir", to.location);
  auto copy = open(to, O_RDONLY | O_DIRECTORY);
  FolderReader reader(open({source.get(), ".", from.location}, O_RDONLY | O_DIRECTORY), from.location);
  while (const RawEntry* entry = reader.read()) {
    const std::string name = entry->name;
    const auto wide = fl::i18n::to_ustring(name);
    copyOne({reader.descriptor(), name.c_str(), StorageIRI(from.location, wide)},
            {copy.get(), name.c_str(), StorageIRI(to.location, wide)});
  }
  finish(source, status, std::move(copy), from, to);
}

void copyLink(const End& from, const struct stat& status, const End& to) {
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

void copySpecial(const struct stat& status, const End& to) {
  if (sys().mknodat(to.folder, to.name, status.st_mode, status.st_rdev) == -1)
    throw systemFailure(errno, "mknod", to.location);
  sys().fchownat(to.folder, to.name, status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW);
  if (sys().utimensat(to.folder, to.name, timesOf(status).data(), AT_SYMLINK_NOFOLLOW) == -1)
    throw systemFailure(errno, "utimensat", to.location);
}

void copyOne(const End& from, const End& to) {
  struct stat status;
  if (sys().fstatat(from.folder, from.name, &status, AT_SYMLINK_NOFOLLOW) == -1)
    throw systemFailure(errno, "stat", from.location);
  if (S_ISREG(status.st_mode))
    copyFile(from, to);
  else if (S_ISDIR(status.st_mode))
    copyFolder(from, status, to);
  else if (S_ISLNK(status.st_mode))
    copyLink(from, status, to);
  else
    copySpecial(status, to);
}

}  // namespace

void copyEntry(const Place& from, const StorageIRI& source, const Place& to, const StorageIRI& destination) {
  copyOne({from.folder, from.name.c_str(), source}, {to.folder, to.name.c_str(), destination});
}

}  // namespace foundation::storage::backend::local::detail
