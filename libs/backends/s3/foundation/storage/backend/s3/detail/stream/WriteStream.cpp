#include <foundation/storage/backend/s3/detail/stream/WriteStream.h>

#include <foundation/storage/backend/s3/detail/stream/StreamFailure.h>
#include <foundation/storage/backend/s3/detail/stream/StreamPosition.h>

#include <utility>

namespace foundation::storage::backend::s3::detail::stream {

using provider::ByteStreamCloseFailure;
using provider::ByteStreamReadFailure;
using provider::ByteStreamSeekFailure;
using provider::ByteStreamWriteFailure;
using provider::ErrorCode;

WriteStream::WriteStream(Target target, WriteMode mode, std::function<void()> published)
    : location_(std::move(target.location)),
      mayPublish_(mode.mayPublish),
      published_(std::move(published)),
      writer_(std::move(target.client), std::move(target.key), std::move(mode)) {}

WriteStream::~WriteStream() = default;

void WriteStream::commit() {
  if (!isOpen_)
    return;
  streamingAt<ByteStreamCloseFailure>(location_, [this] { publish(); });
  isOpen_ = false;
  if (published_)
    published_();
}

void WriteStream::abort() {
  if (!isOpen_)
    return;
  if (!failure_)  // parts of it may be gone even where aborting fails
    failure_ = std::make_exception_ptr(
        client::StoreFailure(ErrorCode::IOError, "What was written has been given up: it can only be aborted"));
  streamingAt<ByteStreamCloseFailure>(location_, [this] { writer_.abort(); });
  isOpen_ = false;
}

std::int64_t WriteStream::doRead(char* /*buffer*/, std::int64_t count) {
  requireOpenFor<ByteStreamReadFailure>(isOpen_, count, location_);
  return -1;
}

std::int64_t WriteStream::doWrite(const char* buffer, std::int64_t count) {
  requireOpenFor<ByteStreamWriteFailure>(isOpen_, count, location_);
  streamingAt<ByteStreamWriteFailure>(location_, [&] { write({buffer, static_cast<std::size_t>(count)}); });
  return count;
}

std::streampos WriteStream::doSeek(std::int64_t offset, int origin) {
  requireOpenFor<ByteStreamSeekFailure>(isOpen_, 0, location_);
  const auto position = writer_.size();
  if (sought(offset, origin, position, position, location_) != position)
    throw refusedStream<ByteStreamSeekFailure>(ErrorCode::UnsupportedOperation, location_,
                                               u"Objects are written in order, from the beginning to the end");
  return static_cast<std::streamoff>(position);
}

void WriteStream::doClose() {
  try {
    commit();
  } catch (...) {
    isOpen_ = false;
    writer_.abandon();
    throw;
  }
}

void WriteStream::write(std::string_view bytes) {
  if (failure_)
    std::rethrow_exception(failure_);
  try {
    writer_.write(bytes);
  } catch (...) {
    failure_ = std::current_exception();
    throw;
  }
}

void WriteStream::publish() {
  if (failure_)
    std::rethrow_exception(failure_);
  if (mayPublish_)
    mayPublish_();
  writer_.publish();
}

}  // namespace foundation::storage::backend::s3::detail::stream
