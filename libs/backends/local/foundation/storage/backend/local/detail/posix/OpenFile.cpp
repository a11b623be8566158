#include <foundation/storage/backend/local/detail/posix/OpenFile.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/Retry.h>

#include <cerrno>
#include <fcntl.h>

namespace foundation::storage::backend::local::detail {

using provider::ByteStreamOpenFailure;
using provider::ErrorCode;
using provider::StorageIRI;

namespace {

void requireContent(const OpenFile& file, const StorageIRI& location) {
  if (S_ISDIR(file.status.st_mode))
    throw streamFailure<ByteStreamOpenFailure>(EISDIR, "open", location);
  if (S_ISFIFO(file.status.st_mode) || S_ISSOCK(file.status.st_mode))
    throw ByteStreamOpenFailure(streamMessage(location, "Is a pipe or a socket"), ErrorCode::InvalidLocation);
}

/// Opening does not wait; reading and writing a device does.
void makeBlocking(const OpenFile& file, const StorageIRI& location) {
  if (S_ISREG(file.status.st_mode))
    return;  // makes no difference
  const int flags = fcntl(file.descriptor.get(), F_GETFL);
  if (flags == -1 || fcntl(file.descriptor.get(), F_SETFL, flags & ~O_NONBLOCK) == -1)
    throw streamFailure<ByteStreamOpenFailure>(errno, "fcntl", location);
}

}  // namespace

OpenFile openFile(const StorageIRI& location, int flags) {
  const auto path = nativePath(location);
  const int all = flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  OpenFile file{Descriptor(retried([&] { return open(path.c_str(), all, 0666); })), {}};
  if (!file.descriptor.isOpen())
    throw streamFailure<ByteStreamOpenFailure>(errno, "open", location);
  if (fstat(file.descriptor.get(), &file.status) == -1)
    throw streamFailure<ByteStreamOpenFailure>(errno, "fstat", location);
  requireContent(file, location);
  makeBlocking(file, location);
  return file;
}

}  // namespace foundation::storage::backend::local::detail
