#pragma once

#include <cstdint>
#include <limits>
#include <mutex>

namespace foundation::storage::backend::memory::detail {

/// How much a store holds, and may hold, in bytes. Any number of threads may use it.
class Space {
 public:
  static constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

  /// Takes as much as there is, up to `bytes`.
  /// @return how much that was
  std::uint64_t take(std::uint64_t bytes);
  void giveBack(std::uint64_t bytes);

  /// May lie below what is occupied: then nothing more fits.
  void setCapacity(std::uint64_t bytes);
  std::uint64_t capacity() const;
  std::uint64_t occupied() const;

 private:
  mutable std::mutex mutex_;  ///< the innermost lock of the store; guards both figures
  std::uint64_t capacity_ = unlimited;
  std::uint64_t occupied_ = 0;
};

}  // namespace foundation::storage::backend::memory::detail
