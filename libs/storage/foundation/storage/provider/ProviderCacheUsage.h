#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <optional>

namespace foundation::storage::provider {

/// How much room a provider's cache has left.
class FOUNDATION_EXPORT ProviderCacheUsage {
 public:
  /// In bytes; absent where it is not known or there is no cache.
  std::optional<std::uint64_t> getSpaceAvailable() const { return spaceAvailable_; }

  /// @return this object
  ProviderCacheUsage& withSpaceAvailable(std::uint64_t bytes) {
    spaceAvailable_ = bytes;
    return *this;
  }

 private:
  std::optional<std::uint64_t> spaceAvailable_;
};

}  // namespace foundation::storage::provider
