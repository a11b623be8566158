#include <foundation/storage/backend/local/detail/posix/OpenFile.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <cerrno>
#include <fcntl.h>

namespace foundation::storage::backend::local::detail {

using provider::ByteStreamOpenFailure;
using provider::ErrorCode;
using provider::StorageIRI;

namespace {

void requireContent(const struct stat& status, const StorageIRI& location) {
  if (S_ISDIR(status.st_mode))
    throw streamFailure<ByteStreamOpenFailure>(EISDIR, "open", location);
  if (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode))
    throw streamRefusal<ByteStreamOpenFailure>(ErrorCode::InvalidLocation, location, "This is a pipe or a socket");
}

/// Opening a pipe would already be felt at its other end.
void requireNoPipe(const FileSystem& files, const std::string& path, const StorageIRI& location) {
  struct stat status;
  if (files.status(path, Links::Follow, status) == 0 && !S_ISDIR(status.st_mode))
    requireContent(status, location);
}

/// Opening does not wait; reading and writing a device does.
void makeBlocking(const OpenFile& file, const StorageIRI& location) {
  if (S_ISREG(file.status.st_mode))
    return;  // makes no difference
  const int flags = sys().fileFlags(file.descriptor.get());
  if (flags == -1 || sys().setFileFlags(file.descriptor.get(), flags & ~O_NONBLOCK) == -1)
    throw streamFailure<ByteStreamOpenFailure>(errno, "fcntl", location);
}

}  // namespace

OpenFile openFile(const FileSystem& files, const StorageIRI& location, int flags, mode_t mode) {
  const auto path = nativePath(location);
  requireNoPipe(files, path, location);
  const auto openWith = [&](int more) { return files.open(path, flags | O_NOCTTY | more, mode); };
  OpenFile file{openWith(O_NONBLOCK), {}};
  if (!file.descriptor.isOpen() && errno == EWOULDBLOCK)
    file.descriptor = openWith(0);  // a file that is leased to another program, which gives it up soon (fcntl(2))
  if (!file.descriptor.isOpen())
    throw streamFailure<ByteStreamOpenFailure>(errno, "open", location);
  if (sys().fstat(file.descriptor.get(), &file.status) == -1)
    throw streamFailure<ByteStreamOpenFailure>(errno, "fstat", location);
  requireContent(file.status, location);
  makeBlocking(file, location);
  return file;
}

}  // namespace foundation::storage::backend::local::detail
