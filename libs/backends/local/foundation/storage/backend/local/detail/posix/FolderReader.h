#pragma once

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <cstddef>
#include <memory>

namespace foundation::storage::backend::local::detail {

/// An entry as the system's own listing gives it.
struct RawEntry {
  const char* name;    ///< ends in NUL; valid until the next entry is read
  unsigned char type;  ///< DT_REG and so on (readdir(3)); DT_UNKNOWN on some file systems
};

/// Reads a folder's entries as they come, many with one system call (getdents64(2)), in the memory of
/// one buffer however many there are. "." and ".." are left out.
class FolderReader {
 public:
  /// Reads an open folder.
  /// @param location  what failures are to name
  FolderReader(Descriptor folder, const provider::StorageIRI& location);

  /// The next entry, or null at the end. Throws `Exception`.
  const RawEntry* read();

  /// Back to the beginning; the folder is read anew.
  void rewind();

  int descriptor() const noexcept { return folder_.get(); }

 private:
  bool fill();

  provider::StorageIRI location_;
  Descriptor folder_;
  std::unique_ptr<char[]> buffer_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  RawEntry entry_{};
};

}  // namespace foundation::storage::backend::local::detail
