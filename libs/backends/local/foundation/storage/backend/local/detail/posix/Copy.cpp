#include <foundation/storage/backend/local/detail/posix/Copy.h>

#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/OpenFile.h>
#include <foundation/storage/backend/local/detail/posix/Retry.h>
#include <foundation/storage/provider/FailureConversion.h>

#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <memory>
#include <sys/ioctl.h>
#include <unistd.h>

namespace foundation::storage::backend::local::detail {

using provider::ErrorCode;
using provider::StorageIRI;

namespace {

constexpr std::size_t bufferSize = std::size_t{128} * 1024;
constexpr std::size_t rangeSize = std::size_t{1} << 30;

OpenFile opened(const StorageIRI& location, int flags, mode_t mode) {
  try {
    return openFile(location, flags, mode);
  } catch (const provider::ByteStreamFailure& failure) {
    throw provider::toException(failure, location);
  }
}

/// Whether an error number of copy_file_range(2) says that it does not serve these two files.
bool meansUnable(int error) {
  return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EPERM;
}

class Copy {
 public:
  Copy(const StorageIRI& source, const StorageIRI& destination, provider::ReplacementPolicy policy)
      : source_(source),
        destination_(destination),
        from_(opened(source, O_RDONLY, 0)),
        to_(opened(destination, O_WRONLY | O_CREAT | (preservesExisting(policy) ? O_EXCL : 0),
                   from_.status.st_mode & 0777)) {}

  void run() {
    if (from_.status.st_dev == to_.status.st_dev && from_.status.st_ino == to_.status.st_ino)
      throw refusal(ErrorCode::InvalidLocation, destination_, u"A file cannot be copied onto itself");
    // Emptied only now that it is known not to be the source.
    if (to_.status.st_size > 0 && retried([this] { return ftruncate(output(), 0); }) == -1)
      throw systemFailure(errno, "ftruncate", destination_);
    if (!shareBlocks() && !copyRanges())
      copyThroughBuffer();
    if (const int error = to_.descriptor.close())
      throw systemFailure(error, "close", destination_);
  }

 private:
  int input() const { return from_.descriptor.get(); }
  int output() const { return to_.descriptor.get(); }

  bool shareBlocks() const {
    const bool canShare = S_ISREG(from_.status.st_mode) && from_.status.st_size > 0;
    return canShare && ioctl(output(), FICLONE, input()) == 0;
  }

  /// @return false where the system cannot copy between these two; nothing was copied then. An empty
  ///         first range is no proof of an empty file: those of /proc are read to learn that.
  bool copyRanges() const {
    for (bool isFirst = true;; isFirst = false) {
      const auto copied =
          retried([this] { return copy_file_range(input(), nullptr, output(), nullptr, rangeSize, 0); });
      if (copied == 0)
        return !isFirst;
      if (copied == -1 && isFirst && meansUnable(errno))
        return false;
      if (copied == -1)
        throw systemFailure(errno, "copy_file_range", destination_);
    }
  }

  void copyThroughBuffer() const {
    const std::unique_ptr<char[]> buffer(new char[bufferSize]);
    for (;;) {
      const auto got = retried([&] { return read(input(), buffer.get(), bufferSize); });
      if (got == -1)
        throw systemFailure(errno, "read", source_);
      if (got == 0)
        return;
      writeAll(buffer.get(), static_cast<std::size_t>(got));
    }
  }

  void writeAll(const char* data, std::size_t size) const {
    while (size > 0) {
      const auto written = retried([&] { return write(output(), data, size); });
      if (written <= 0)
        throw systemFailure(written == 0 ? ENOSPC : errno, "write", destination_);
      data += written;
      size -= static_cast<std::size_t>(written);
    }
  }

  const StorageIRI& source_;
  const StorageIRI& destination_;
  OpenFile from_;
  OpenFile to_;
};

}  // namespace

void copyContent(const StorageIRI& source, const StorageIRI& destination, provider::ReplacementPolicy policy) {
  Copy(source, destination, policy).run();
}

}  // namespace foundation::storage::backend::local::detail
