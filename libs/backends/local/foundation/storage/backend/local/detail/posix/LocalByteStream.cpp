#include <foundation/storage/backend/local/detail/posix/LocalByteStream.h>

#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <array>
#include <cerrno>
#include <unistd.h>
#include <utility>

namespace foundation::storage::backend::local::detail {

using provider::ByteStreamCloseFailure;
using provider::ByteStreamReadFailure;
using provider::ByteStreamSeekFailure;
using provider::ByteStreamWriteFailure;
using provider::ErrorCode;

LocalByteStream::LocalByteStream(Descriptor descriptor, provider::StorageIRI location)
    : owned_(std::move(descriptor)), descriptor_(owned_.get()), location_(std::move(location)) {}

LocalByteStream::LocalByteStream(int descriptor, provider::StorageIRI location)
    : descriptor_(descriptor), location_(std::move(location)) {}

std::int64_t LocalByteStream::doRead(char* buffer, std::int64_t count) {
  if (count < 0)
    throw streamRefusal<ByteStreamReadFailure>(ErrorCode::IOError, location_, "The count is negative");
  const auto got = sys().read(descriptor_, buffer, static_cast<std::size_t>(count));
  if (got == -1)
    throw streamFailure<ByteStreamReadFailure>(errno, "read", location_);
  return got == 0 && count > 0 ? -1 : got;
}

std::int64_t LocalByteStream::doWrite(const char* buffer, std::int64_t count) {
  if (count < 0)
    throw streamRefusal<ByteStreamWriteFailure>(ErrorCode::IOError, location_, "The count is negative");
  if (descriptor_ == -1)
    throw streamFailure<ByteStreamWriteFailure>(EBADF, "write", location_);
  std::int64_t done = 0;
  while (done < count) {
    const auto rest = static_cast<std::size_t>(count - done);
    const auto written = sys().write(descriptor_, buffer + done, rest);
    if (written > 0)
      done += written;
    else if (done > 0)
      return done;
    else
      throw streamFailure<ByteStreamWriteFailure>(written == 0 ? ENOSPC : errno, "write", location_);
  }
  return done;
}

std::streampos LocalByteStream::doSeek(std::int64_t offset, int origin) {
  static constexpr std::array origins{SEEK_SET, SEEK_CUR, SEEK_END};
  if (origin < 0 || origin >= static_cast<int>(origins.size()))
    throw streamRefusal<ByteStreamSeekFailure>(ErrorCode::IOError, location_, "The origin of the seek is unknown");
  const auto position = sys().lseek(descriptor_, offset, origins[static_cast<std::size_t>(origin)]);
  if (position == -1 && errno == EINVAL && offset >= 0)
    throw streamFailure<ByteStreamSeekFailure>(EOVERFLOW, "lseek", location_);
  if (position == -1 && errno == EINVAL)
    throw streamRefusal<ByteStreamSeekFailure>(ErrorCode::IOError, location_, "The position lies before the beginning");
  if (position == -1)
    throw streamFailure<ByteStreamSeekFailure>(errno, "lseek", location_);
  return position;
}

void LocalByteStream::doClose() {
  descriptor_ = -1;
  if (const int error = owned_.close())
    throw streamFailure<ByteStreamCloseFailure>(error, "close", location_);
}

}  // namespace foundation::storage::backend::local::detail
