#include <foundation/storage/backend/s3/detail/stream/ReadStream.h>

#include <foundation/storage/backend/s3/detail/stream/StreamFailure.h>
#include <foundation/storage/backend/s3/detail/stream/StreamPosition.h>

#include <utility>

namespace foundation::storage::backend::s3::detail::stream {

using provider::ByteStreamReadFailure;
using provider::ByteStreamSeekFailure;
using provider::ByteStreamWriteFailure;
using provider::ErrorCode;

ReadStream::ReadStream(Target target)
    : location_(std::move(target.location)),
      content_(std::make_unique<ReadAhead>(std::move(target.client), std::move(target.key))),
      check_(content_->object()) {}

std::int64_t ReadStream::doRead(char* buffer, std::int64_t count) {
  requireOpenFor<ByteStreamReadFailure>(content_ != nullptr, count, location_);
  if (count == 0)
    return 0;
  if (position_ >= content_->object().size)
    return -1;
  const auto got =
      streamingAt<ByteStreamReadFailure>(location_, [&] { return readSome(buffer, static_cast<std::size_t>(count)); });
  return static_cast<std::int64_t>(got);
}

std::int64_t ReadStream::doWrite(const char* /*buffer*/, std::int64_t /*count*/) {
  throw refusedStream<ByteStreamWriteFailure>(ErrorCode::IOError, location_, u"The stream was opened for reading");
}

std::streampos ReadStream::doSeek(std::int64_t offset, int origin) {
  requireOpenFor<ByteStreamSeekFailure>(content_ != nullptr, 0, location_);
  position_ = sought(offset, origin, position_, content_->object().size, location_);
  return static_cast<std::streamoff>(position_);
}

std::size_t ReadStream::readSome(char* buffer, std::size_t count) {
  const auto bytes = content_->at(position_).substr(0, count);
  if (!check_.accepts(position_, bytes))
    throw client::StoreFailure(
        ErrorCode::IOError,
        "The content does not match the checksum that the store has of it: it was damaged in the "
        "store or on the way, and should be read again or restored");
  bytes.copy(buffer, bytes.size());
  position_ += bytes.size();
  return bytes.size();
}

}  // namespace foundation::storage::backend::s3::detail::stream
