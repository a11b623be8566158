#include <foundation/storage/backend/local/detail/posix/ScratchFile.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/Retry.h>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace foundation::storage::backend::local::detail {

using provider::ByteStreamOpenFailure;
using provider::StorageIRI;

namespace {

constexpr mode_t groupBits = 0070;

/// What the group of a new file may do.
mode_t groupModeOf(const Permissions& permissions, bool isOfThatGroup) {
  const mode_t ofOthers = (permissions.mode & 0007) << 3;
  const bool isTheGroups = isOfThatGroup && !permissions.hasAccessList;
  return permissions.mode & (isTheGroups ? groupBits : ofOthers);
}

}  // namespace

ScratchFile::ScratchFile(const StorageIRI& location, int flags, mode_t mode) {
  auto path = nativePath(location);
  const int all = flags | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY;
  descriptor_ = Descriptor(retried([&] { return open(path.c_str(), all, mode); }));
  if (!descriptor_.isOpen())
    throw streamFailure<ByteStreamOpenFailure>(errno, "open", location);
  path_ = std::move(path);
}

// It is the finished delegate that makes the destructor remove the file where the body throws.
ScratchFile::ScratchFile(const StorageIRI& location, int flags, const std::optional<Permissions>& permissions)
    : ScratchFile(location, flags, permissions ? permissions->mode & ~groupBits : 0666) {
  if (permissions)
    setPermissions(location, *permissions);
}

ScratchFile::~ScratchFile() {
  if (path_)
    unlink(path_->c_str());
}

void ScratchFile::setPermissions(const StorageIRI& location, const Permissions& permissions) const {
  struct stat status;
  if (fstat(descriptor_.get(), &status) == -1)
    throw streamFailure<ByteStreamOpenFailure>(errno, "fstat", location);
  const bool isOfThatGroup =
      status.st_gid == permissions.group || fchown(descriptor_.get(), static_cast<uid_t>(-1), permissions.group) == 0;
  const mode_t mode = (permissions.mode & ~groupBits) | groupModeOf(permissions, isOfThatGroup);
  // Only where that makes a difference: not every file system can set them.
  if ((status.st_mode & 07777) != mode && fchmod(descriptor_.get(), mode) == -1)
    throw streamFailure<ByteStreamOpenFailure>(errno, "fchmod", location);
}

}  // namespace foundation::storage::backend::local::detail
