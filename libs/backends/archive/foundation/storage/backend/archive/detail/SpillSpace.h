#pragma once

#include <foundation/storage/backend/archive/detail/posix/SpillFile.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace foundation::storage::backend::archive::detail {

/// One temporary file, in blocks, for the new contents of all files of the process: with a file for each they would
/// take as many descriptors. Any number of threads may use it. Operations throw `Fault`.
class SpillSpace {
 public:
  static constexpr std::size_t blockSize = 256 * 1024;  ///< in bytes

  /// The one that is in use, or a new one: it lives as long as somebody holds it.
  static std::shared_ptr<SpillSpace> shared();

  /// @return a block of zeros, for nobody else
  std::uint64_t take() noexcept;
  /// Gives the disk back what the block took.
  void giveBack(std::uint64_t block) noexcept;

  /// Up to the end of the block.
  void read(std::uint64_t block, std::size_t offset, char* buffer, std::size_t count) const;
  void write(std::uint64_t block, std::size_t offset, const char* bytes, std::size_t count);

 private:
  posix::SpillFile file_;
  std::mutex mutex_;  ///< guards what follows
  std::vector<std::uint64_t> free_;
  std::uint64_t next_ = 0;  ///< that was never taken
};

}  // namespace foundation::storage::backend::archive::detail
