#pragma once

#include <cstddef>
#include <cstdint>

namespace foundation::storage::backend::archive::detail::posix {

/// A file without a name, in the system's folder for temporary files: it is gone when it is closed, also by the
/// end of the process, however that ends. Operations throw `Fault`: `NoSpaceLeft` where the disk is full.
class SpillFile {
 public:
  SpillFile();
  SpillFile(const SpillFile&) = delete;
  SpillFile& operator=(const SpillFile&) = delete;
  ~SpillFile();

  /// Reads as much as is there; gaps are zeros.
  std::size_t read(std::uint64_t position, char* buffer, std::size_t count) const;
  /// Writes all.
  void write(std::uint64_t position, const char* bytes, std::size_t count);
  /// Makes zeros of what is there, and gives its space back to the disk.
  /// @return false where the file system cannot do that (fallocate(2)): nothing has happened then
  bool discard(std::uint64_t position, std::uint64_t count) noexcept;

 private:
  int descriptor_;
};

}  // namespace foundation::storage::backend::archive::detail::posix
