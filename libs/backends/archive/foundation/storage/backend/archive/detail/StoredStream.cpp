#include <foundation/storage/backend/archive/detail/StoredStream.h>

#include <foundation/storage/backend/archive/detail/Failure.h>
#include <foundation/storage/backend/archive/detail/StreamPosition.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::archive::detail {

using provider::ByteStreamReadFailure;
using provider::ByteStreamSeekFailure;
using provider::ByteStreamWriteFailure;

StoredStream::StoredStream(std::shared_ptr<const StoredArchive> archive, std::size_t number,
                           std::optional<std::uint64_t> size, provider::StorageIRI location)
    : archive_(std::move(archive)),
      number_(number),
      size_(size),
      location_(std::move(location)),
      reader_(archive_->open(number_)) {}

std::int64_t StoredStream::doRead(char* buffer, std::int64_t count) {
  requireOpenFor<ByteStreamReadFailure>(reader_ != nullptr, count, location_);
  if (count == 0)
    return 0;
  const auto got =
      streamingAt<ByteStreamReadFailure>(location_, [&] { return readSome(buffer, static_cast<std::size_t>(count)); });
  return got == 0 ? -1 : static_cast<std::int64_t>(got);
}

std::int64_t StoredStream::doWrite(const char* /*buffer*/, std::int64_t /*count*/) {
  throw streamRefusal<ByteStreamWriteFailure>(provider::ErrorCode::IOError, location_,
                                              u"The stream was opened for reading");
}

std::streampos StoredStream::doSeek(std::int64_t offset, int origin) {
  requireOpenFor<ByteStreamSeekFailure>(reader_ != nullptr, 0, location_);
  const auto end = [&] { return streamingAt<ByteStreamSeekFailure>(location_, [&] { return size(); }); };
  const auto position = sought(offset, origin, static_cast<std::int64_t>(position_), end, location_);
  position_ = static_cast<std::uint64_t>(position);
  return position;
}

void StoredStream::doClose() {
  reader_.reset();
  memory_ = std::string();
  archive_.reset();
}

std::size_t StoredStream::readSome(char* buffer, std::size_t count) {
  if (size_ && position_ > *size_)
    return 0;
  if (std::exchange(hasFailed_, true) || position_ < decoded_ - memory_.size())
    beginAnew();
  std::size_t got = 0;
  if (reader_->isSeekable()) {
    got = readDirectly(buffer, count);
  } else {
    bool isMore = true;
    while (isMore && decoded_ <= position_)
      isMore = decodeMore() > 0;
    if (decoded_ > position_) {
      const auto behind = static_cast<std::size_t>(decoded_ - position_);
      got = memory_.copy(buffer, std::min(count, behind), memory_.size() - behind);
    }
  }
  hasFailed_ = false;
  position_ += got;
  return got;
}

std::size_t StoredStream::readDirectly(char* buffer, std::size_t count) {
  if (position_ != decoded_)
    reader_->seek(position_);
  const auto got = reader_->read(buffer, count);
  decoded_ = position_ + got;
  return got;
}

/// Adds to the memory, and drops what is too long ago.
std::size_t StoredStream::decodeMore() {
  // The first parts are small, so that small files cost little.
  const auto step = std::clamp<std::size_t>(memory_.size(), 4 * 1024, 64 * 1024);
  if (memory_.size() + step > 2 * memorySize)
    memory_.erase(0, memory_.size() - memorySize);
  const auto size = memory_.size();
  memory_.resize(size + step);
  const auto got = reader_->read(memory_.data() + size, step);
  memory_.resize(size + got);
  decoded_ += got;
  return got;
}

void StoredStream::beginAnew() {
  memory_.clear();
  decoded_ = 0;
  if (!reader_->seek(0))
    reader_ = archive_->open(number_);
}

std::uint64_t StoredStream::size() {
  if (!size_) {
    if (std::exchange(hasFailed_, true))
      beginAnew();
    while (decodeMore() > 0) {
    }
    hasFailed_ = false;
    size_ = decoded_;
  }
  return *size_;
}

}  // namespace foundation::storage::backend::archive::detail
