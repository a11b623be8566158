#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <limits>

namespace foundation::storage::provider {

/// How big a store is and how full, in bytes. Unless told otherwise it is boundless and empty.
class FOUNDATION_EXPORT ProviderStorageInfo {
 public:
  /// All that the store can hold.
  std::uint64_t getStorageCapacity() const { return storageCapacity_; }
  /// What is taken of it, by whomever.
  std::uint64_t getSpaceOccupied() const { return spaceOccupied_; }

  /// @return this object
  /// @{
  ProviderStorageInfo& withStorageCapacity(std::uint64_t bytes) {
    storageCapacity_ = bytes;
    return *this;
  }
  ProviderStorageInfo& withSpaceOccupied(std::uint64_t bytes) {
    spaceOccupied_ = bytes;
    return *this;
  }
  /// @}

 private:
  std::uint64_t storageCapacity_ = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t spaceOccupied_ = 0;
};

}  // namespace foundation::storage::provider
