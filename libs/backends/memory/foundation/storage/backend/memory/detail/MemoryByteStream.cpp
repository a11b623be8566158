#include <foundation/storage/backend/memory/detail/MemoryByteStream.h>

#include <foundation/storage/backend/memory/detail/Failure.h>

#include <ios>
#include <limits>
#include <new>
#include <utility>

namespace foundation::storage::backend::memory::detail {

using provider::ByteStreamReadFailure;
using provider::ByteStreamSeekFailure;
using provider::ByteStreamWriteFailure;
using provider::ErrorCode;

MemoryByteStream::MemoryByteStream(std::shared_ptr<FileContent> content, Mode mode, provider::StorageIRI location)
    : content_(std::move(content)), mode_(mode), location_(std::move(location)) {}

template <class Failure>
void MemoryByteStream::requireOpen() const {
  if (!content_)
    throw streamRefusal<Failure>(ErrorCode::IOError, location_, u"The stream is closed");
}

std::int64_t MemoryByteStream::doRead(char* buffer, std::int64_t count) {
  requireOpen<ByteStreamReadFailure>();
  if (count < 0)
    throw streamRefusal<ByteStreamReadFailure>(ErrorCode::IOError, location_, u"The count is negative");
  const auto got = static_cast<std::int64_t>(
      content_->read(static_cast<std::uint64_t>(position_), buffer, static_cast<std::size_t>(count)));
  position_ += got;
  return got == 0 && count > 0 ? -1 : got;
}

std::int64_t MemoryByteStream::doWrite(const char* buffer, std::int64_t count) {
  requireOpen<ByteStreamWriteFailure>();
  if (count < 0)
    throw streamRefusal<ByteStreamWriteFailure>(ErrorCode::IOError, location_, u"The count is negative");
  if (count == 0)
    return 0;
  const auto at = mode_ == Mode::Appending ? std::nullopt : std::optional(static_cast<std::uint64_t>(position_));
  const auto written = write(at, buffer, static_cast<std::size_t>(count));
  if (written.count == 0 && written.end == FileContent::maximumSize)
    throw streamRefusal<ByteStreamWriteFailure>(ErrorCode::FileTooLarge, location_, u"No file can be longer");
  if (written.count == 0)
    throw streamRefusal<ByteStreamWriteFailure>(ErrorCode::NoSpaceLeft, location_, u"The store is full");
  position_ = static_cast<std::int64_t>(written.end);
  return static_cast<std::int64_t>(written.count);
}

FileContent::Written MemoryByteStream::write(std::optional<std::uint64_t> position, const char* bytes,
                                             std::size_t count) {
  try {
    return content_->write(position, bytes, count);
  } catch (const std::bad_alloc&) {
    throw streamRefusal<ByteStreamWriteFailure>(ErrorCode::InternalError, location_, u"There is no memory left");
  }
}

std::int64_t MemoryByteStream::base(int origin) const {
  switch (origin) {
    case std::ios_base::beg:
      return 0;
    case std::ios_base::cur:
      return position_;
    case std::ios_base::end:
      return static_cast<std::int64_t>(content_->size());
    default:
      throw streamRefusal<ByteStreamSeekFailure>(ErrorCode::IOError, location_, u"The origin of the seek is unknown");
  }
}

std::streampos MemoryByteStream::doSeek(std::int64_t offset, int origin) {
  requireOpen<ByteStreamSeekFailure>();
  const auto from = base(origin);
  if (offset < -from)
    throw streamRefusal<ByteStreamSeekFailure>(ErrorCode::IOError, location_,
                                               u"The position lies before the beginning");
  if (offset > std::numeric_limits<std::int64_t>::max() - from)
    throw streamRefusal<ByteStreamSeekFailure>(ErrorCode::FileTooLarge, location_, u"No file can be that long");
  position_ = from + offset;
  return position_;
}

}  // namespace foundation::storage::backend::memory::detail
