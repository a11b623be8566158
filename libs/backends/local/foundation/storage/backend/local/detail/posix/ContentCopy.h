#pragma once

#include <foundation/storage/backend/local/detail/posix/OpenFile.h>
#include <foundation/storage/provider/InterruptSignal.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <memory>

namespace foundation::storage::backend::local::detail {

/// An open file, and what failures are to name.
struct CopyEnd {
  int file;
  const provider::StorageIRI& location;
};

/// Copies the content of an open file to the beginning of an empty one, inside the kernel as far as that goes: by
/// sharing blocks where the file system can (ioctl_ficlone(2)), else by copy_file_range(2), else through a buffer.
/// Holes of a regular file stay holes.
class ContentCopy {
 public:
  /// @param status       of the source
  /// @param mayHaveHoles whether the destination is a regular file
  ContentCopy(CopyEnd from, const struct stat& status, CopyEnd to, bool mayHaveHoles = true);

  /// Throws `Exception` with the file at fault.
  /// @param goOn  asked after each 4 MiB, holes included, and at the end; may be empty
  /// @return whether it was copied to the end
  bool run(const provider::InterruptCallback& goOn = {});

 private:
  bool shareBlocks() const;
  bool copyData();
  bool copyTo(off_t end);
  off_t copyChunk(off_t maximum);
  off_t copyRange(off_t maximum);
  off_t copyThroughBuffer(off_t maximum);
  void write(const char* data, std::size_t size) const;
  bool advance(off_t size);
  bool mayGoOn() const;
  off_t find(int what) const;
  off_t endOfSource() const;
  void seekTo(off_t position);

  const CopyEnd from_;
  const CopyEnd to_;
  const struct stat& status_;
  const bool mayHaveHoles_;
  const provider::InterruptCallback* goOn_ = nullptr;
  std::unique_ptr<char[]> buffer_;
  off_t at_ = 0;       ///< up to where it is copied
  off_t unasked_ = 0;  ///< of that, since the callback was asked
  bool usesRanges_ = true;
};

}  // namespace foundation::storage::backend::local::detail
