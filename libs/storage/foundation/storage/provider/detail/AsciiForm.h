#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// Comparing and hashing the ASCII forms of texts without making them: most texts are their own ASCII
/// form, and those that are not would have to be held three times as long.
///
/// The texts are well-formed UTF-16, as those of IRIs are.
namespace foundation::storage::provider::detail {

/// The offset of the first code unit in which the texts differ, or the length of the shorter one.
inline std::size_t findDifference(std::u16string_view a, std::u16string_view b) {
  constexpr std::size_t unitsPerWord = sizeof(std::uint64_t) / sizeof(char16_t);
  const auto size = std::min(a.size(), b.size());
  std::size_t at = 0;
  if constexpr (std::endian::native == std::endian::little) {
    for (; at + unitsPerWord <= size; at += unitsPerWord) {
      std::uint64_t x, y;
      std::memcpy(&x, a.data() + at, sizeof x);
      std::memcpy(&y, b.data() + at, sizeof y);
      if (x != y)
        return at + static_cast<std::size_t>(std::countr_zero(x ^ y)) / (8 * sizeof(char16_t));
    }
  }
  while (at < size && a[at] == b[at])
    ++at;
  return at;
}

/// As the ASCII forms of two texts compare that differ first at `at`: less than, equal to or greater than 0.
int compareAsciiForms(std::u16string_view a, std::u16string_view b, std::size_t at);

/// Lexicographically by code units; a text comes before those that continue it. Inline, as is the search for
/// the difference: sorting locations is little else.
inline bool lessAsciiForm(std::u16string_view a, std::u16string_view b) {
  const auto at = findDifference(a, b);
  if (at < a.size() && at < b.size() && a[at] < 0x80 && b[at] < 0x80)
    return a[at] < b[at];
  return compareAsciiForms(a, b, at) < 0;
}

inline bool sameAsciiForm(std::u16string_view a, std::u16string_view b) {
  if (a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0)
    return true;
  return compareAsciiForms(a, b, findDifference(a, b)) == 0;
}

/// The hash of a location's text, over its ASCII form. Programs store these values and caches are keyed
/// by them, so the mixing is written out here: Boost's `hash_combine`, which it equals, changed between
/// releases.
std::uint64_t hashAsciiForm(std::u16string_view text);

}  // namespace foundation::storage::provider::detail
