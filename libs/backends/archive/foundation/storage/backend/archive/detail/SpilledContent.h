#pragma once

#include <foundation/storage/backend/archive/detail/SpillSpace.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

namespace foundation::storage::backend::archive::detail {

/// The content of one file in a temporary one. What was never written reads as zeros, and takes no space. For one
/// thread at a time, but any number may read. Operations throw `Fault`; where a write fails, some of it may be there.
class SpilledContent {
 public:
  SpilledContent() : space_(SpillSpace::shared()) {}
  SpilledContent(const SpilledContent&) = delete;
  SpilledContent& operator=(const SpilledContent&) = delete;
  ~SpilledContent() { dropFrom(0); }

  /// Reads all of it.
  void read(std::uint64_t position, char* buffer, std::size_t count) const;
  void write(std::uint64_t position, const char* bytes, std::size_t count);
  /// From there on it is zeros again.
  void cut(std::uint64_t size);

 private:
  void dropFrom(std::uint64_t number) noexcept;

  const std::shared_ptr<SpillSpace> space_;
  std::map<std::uint64_t, std::uint64_t> blocks_;  ///< of the space, by their number in the content
};

}  // namespace foundation::storage::backend::archive::detail
