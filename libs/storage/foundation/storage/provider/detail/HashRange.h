#pragma once

#include <cstdint>
#include <string_view>

namespace foundation::storage::provider::detail {

/// The hash of a location's text. Programs store these values and caches are keyed by them, so the
/// mixing is written out here: Boost's `hash_combine`, which it equals, changed between releases.
constexpr std::uint64_t hashRange(std::u16string_view text) {
  constexpr std::uint64_t multiplier = 0xe9846af9b1a615d;
  std::uint64_t seed = 0;
  for (const char16_t unit : text) {
    std::uint64_t x = seed + 0x9e3779b9 + unit;
    x ^= x >> 32;
    x *= multiplier;
    x ^= x >> 32;
    x *= multiplier;
    x ^= x >> 28;
    seed = x;
  }
  return seed;
}

}  // namespace foundation::storage::provider::detail
