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

ScratchFile::ScratchFile(const StorageIRI& location, int flags, mode_t mode) {
  auto path = nativePath(location);
  const bool isNew = (flags & O_CREAT) != 0;
  const int all = flags | (isNew ? O_EXCL : O_NOFOLLOW) | O_CLOEXEC | O_NOCTTY;
  descriptor_ = Descriptor(retried([&] { return open(path.c_str(), all, mode); }));
  if (!descriptor_.isOpen())
    throw streamFailure<ByteStreamOpenFailure>(errno, "open", location);
  if (isNew)
    path_ = std::move(path);
}

// It is the finished delegate that makes the destructor remove the file where the body throws.
ScratchFile::ScratchFile(const StorageIRI& location, int flags, const std::optional<mode_t>& permissions)
    : ScratchFile(location, flags, permissions.value_or(0666)) {
  if (permissions)
    setPermissions(location, *permissions);
}

ScratchFile::~ScratchFile() {
  if (path_)
    unlink(path_->c_str());
}

void ScratchFile::setPermissions(const StorageIRI& location, mode_t permissions) const {
  struct stat status;
  if (fstat(descriptor_.get(), &status) == -1)
    throw streamFailure<ByteStreamOpenFailure>(errno, "fstat", location);
  // Only where the umask has taken some away: not every file system can set them.
  if ((status.st_mode & 07777) != permissions && fchmod(descriptor_.get(), permissions) == -1)
    throw streamFailure<ByteStreamOpenFailure>(errno, "fchmod", location);
}

}  // namespace foundation::storage::backend::local::detail
