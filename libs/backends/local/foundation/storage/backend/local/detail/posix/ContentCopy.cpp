#include <foundation/storage/backend/local/detail/posix/ContentCopy.h>

#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <unistd.h>

namespace foundation::storage::backend::local::detail {
namespace {

constexpr off_t blockSize = off_t{4} << 20;  ///< between two questions to the callback
constexpr off_t rangeSize = off_t{1} << 30;
constexpr std::size_t bufferSize = std::size_t{128} * 1024;
constexpr std::size_t smallSize = std::size_t{16} * 1024;
constexpr off_t toTheEnd = std::numeric_limits<off_t>::max();

/// Whether an error number of copy_file_range(2) says that it does not serve these two files.
bool meansUnable(int error) {
  return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EPERM;
}

}  // namespace

ContentCopy::ContentCopy(CopyEnd from, const struct stat& status, CopyEnd to, bool mayHaveHoles)
    : from_(from), to_(to), status_(status), mayHaveHoles_(mayHaveHoles && S_ISREG(status.st_mode)) {}

bool ContentCopy::run(const provider::InterruptCallback& goOn) {
  goOn_ = goOn ? &goOn : nullptr;
  if (shareBlocks()) {
    if (!advance(status_.st_size))
      return false;
  } else {
    constexpr off_t countedBytes = 512;  // stat(2), st_blocks
    const bool hasHoles = mayHaveHoles_ && status_.st_blocks * countedBytes < status_.st_size;
    if (!(hasHoles ? copyData() : copyTo(toTheEnd)))
      return false;
  }
  return unasked_ == 0 || mayGoOn();
}

bool ContentCopy::shareBlocks() const {
  return S_ISREG(status_.st_mode) && status_.st_size >= static_cast<off_t>(smallSize) &&
         sys().cloneContent(to_.file, from_.file) == 0;
}

/// Copies what is not a hole, and then makes the destination as long as the source.
bool ContentCopy::copyData() {
  off_t size = 0;
  for (;;) {
    size = endOfSource();  // before the look for data, so that what is appended meanwhile is no hole
    const auto data = find(SEEK_DATA);
    if (data == -1)
      break;
    if (!advance(data - at_))
      return false;
    const auto end = find(SEEK_HOLE);
    seekTo(data);
    if (!copyTo(end == -1 ? toTheEnd : end))
      return false;
    if (at_ < end) {  // the source is, or has become, shorter than the system says
      size = at_;
      break;
    }
  }
  size = std::max(at_, size);
  if (sys().ftruncate(to_.file, size) == -1)
    throw systemFailure(errno, "ftruncate", to_.location);
  return advance(size - at_);
}

/// Where the next data or hole begins; -1 where there is none.
off_t ContentCopy::find(int what) const {
  const auto found = sys().lseek(from_.file, at_, what);
  if (found == -1 && errno != ENXIO)
    throw systemFailure(errno, "lseek", from_.location);
  return found;
}

off_t ContentCopy::endOfSource() const {
  const auto end = sys().lseek(from_.file, 0, SEEK_END);
  if (end == -1)
    throw systemFailure(errno, "lseek", from_.location);
  return end;
}

void ContentCopy::seekTo(off_t position) {
  if (sys().lseek(from_.file, position, SEEK_SET) == -1)
    throw systemFailure(errno, "lseek", from_.location);
  if (sys().lseek(to_.file, position, SEEK_SET) == -1)
    throw systemFailure(errno, "lseek", to_.location);
}

bool ContentCopy::copyTo(off_t end) {
  while (at_ < end) {
    const auto copied = copyChunk(std::min(end - at_, goOn_ == nullptr ? rangeSize : blockSize - unasked_));
    if (copied == 0)
      return true;
    if (!advance(copied))
      return false;
  }
  return true;
}

/// @return 0 at the end of the source
off_t ContentCopy::copyChunk(off_t maximum) {
  const auto copied = usesRanges_ ? copyRange(maximum) : 0;
  return usesRanges_ ? copied : copyThroughBuffer(maximum);
}

/// Leaves it to the buffer where the system cannot copy between these two. An empty first range is no proof of an
/// empty file: those of /proc are read to learn that. For a small file a buffer is the quicker way.
off_t ContentCopy::copyRange(off_t maximum) {
  const bool isSmall = at_ == 0 && status_.st_size < static_cast<off_t>(smallSize);
  const auto size = static_cast<std::size_t>(maximum);
  const auto copied = isSmall ? 0 : sys().copyFileRange(from_.file, to_.file, size);
  if (copied == -1 && !meansUnable(errno))
    throw systemFailure(errno, "copy_file_range", to_.location);
  usesRanges_ = copied > 0 || (copied == 0 && at_ > 0);
  return copied;
}

off_t ContentCopy::copyThroughBuffer(off_t maximum) {
  const auto wholeBuffer = status_.st_size < static_cast<off_t>(smallSize) ? smallSize : bufferSize;
  if (!buffer_)
    buffer_.reset(new char[wholeBuffer]);
  const auto size = std::min(static_cast<std::size_t>(maximum), wholeBuffer);
  const auto got = sys().read(from_.file, buffer_.get(), size);
  if (got == -1)
    throw systemFailure(errno, "read", from_.location);
  write(buffer_.get(), static_cast<std::size_t>(got));
  return got;
}

void ContentCopy::write(const char* data, std::size_t size) const {
  while (size > 0) {
    const auto written = sys().write(to_.file, data, size);
    if (written <= 0)
      throw systemFailure(written == 0 ? ENOSPC : errno, "write", to_.location);
    data += written;
    size -= static_cast<std::size_t>(written);
  }
}

/// @return whether to go on
bool ContentCopy::advance(off_t size) {
  at_ += size;
  for (unasked_ += size; unasked_ >= blockSize; unasked_ -= blockSize)
    if (!mayGoOn())
      return false;
  return true;
}

bool ContentCopy::mayGoOn() const { return goOn_ == nullptr || (*goOn_)() == provider::InterruptSignal::Continue; }

}  // namespace foundation::storage::backend::local::detail
