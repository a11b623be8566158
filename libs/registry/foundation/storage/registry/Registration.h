#pragma once

#include <foundation/storage/provider/Capability.h>

#include <cstdint>
#include <string>

namespace foundation::storage::registry {

/// The part that a registered name plays in a location.
enum class Role : std::int32_t {
  Physical = 0,   ///< a scheme, as in "file:///a"
  Container = 1,  ///< a scheme before another location, as in "zip:file:///a.zip!/b"
  Filter = 2,     ///< a prefix of a scheme, as in "readonly+file:///a"
};

/// A name that a `ProviderRegistry` knows.
struct Registration {
  std::u16string name;  ///< in lower case
  Role role;            ///< what the name stands for
  /// What the back end says that it can do, where that was told; of a filter nothing, that depends on what is below.
  provider::Capabilities capabilities = {};

  /// Whether all three are the same.
  bool operator==(const Registration&) const = default;
};

}  // namespace foundation::storage::registry
