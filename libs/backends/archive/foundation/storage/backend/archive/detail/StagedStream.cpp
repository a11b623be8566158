#include <foundation/storage/backend/archive/detail/StagedStream.h>

#include <foundation/storage/backend/archive/detail/Failure.h>
#include <foundation/storage/backend/archive/detail/StreamPosition.h>

#include <utility>

namespace foundation::storage::backend::archive::detail {

using provider::ByteStreamCloseFailure;
using provider::ByteStreamReadFailure;
using provider::ByteStreamSeekFailure;
using provider::ByteStreamWriteFailure;
using provider::ErrorCode;

StagedStream::StagedStream(std::shared_ptr<const StagedContent> content, provider::StorageIRI location)
    : content_(std::move(content)), location_(std::move(location)) {}

StagedStream::StagedStream(std::unique_ptr<StagedContent::Writing> writing, Mode mode, std::shared_ptr<Archive> archive,
                           provider::StorageIRI location)
    : content_(writing->content()),
      writing_(std::move(writing)),
      mode_(mode),
      archive_(std::move(archive)),
      location_(std::move(location)) {}

std::int64_t StagedStream::doRead(char* buffer, std::int64_t count) {
  requireOpenFor<ByteStreamReadFailure>(content_ != nullptr, count, location_);
  const auto got = streamingAt<ByteStreamReadFailure>(location_, [&] {
    return content_->read(static_cast<std::uint64_t>(position_), buffer, static_cast<std::size_t>(count));
  });
  position_ += static_cast<std::int64_t>(got);
  return got == 0 && count > 0 ? -1 : static_cast<std::int64_t>(got);
}

std::int64_t StagedStream::doWrite(const char* buffer, std::int64_t count) {
  requireOpenFor<ByteStreamWriteFailure>(content_ != nullptr, count, location_);
  if (!writing_)
    throw streamRefusal<ByteStreamWriteFailure>(ErrorCode::IOError, location_, u"The stream was opened for reading");
  if (count == 0)
    return 0;
  const auto where = mode_ == Mode::Appending ? std::nullopt : std::optional(static_cast<std::uint64_t>(position_));
  position_ = streamingAt<ByteStreamWriteFailure>(location_, [&] {
    return static_cast<std::int64_t>(writing_->content()->write(where, buffer, static_cast<std::size_t>(count)));
  });
  return count;
}

std::streampos StagedStream::doSeek(std::int64_t offset, int origin) {
  requireOpenFor<ByteStreamSeekFailure>(content_ != nullptr, 0, location_);
  position_ = sought(
      offset, origin, position_, [&] { return content_->size(); }, location_);
  return position_;
}

void StagedStream::doClose() {
  if (!content_)
    return;
  writing_.reset();
  content_.reset();
  if (archive_)
    streamingAt<ByteStreamCloseFailure>(location_, [&] { archive_->noteWritten(location_); });
}

}  // namespace foundation::storage::backend::archive::detail
