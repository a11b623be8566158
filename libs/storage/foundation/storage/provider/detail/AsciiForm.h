#pragma once

#include <cstdint>
#include <string_view>

/// Comparing and hashing the ASCII forms of texts without making them: most texts are their own ASCII
/// form, and those that are not would have to be held three times as long.
///
/// The texts are well-formed UTF-16, as those of IRIs are.
namespace foundation::storage::provider::detail {

bool sameAsciiForm(std::u16string_view a, std::u16string_view b);

/// Lexicographically by code units; a text comes before those that continue it.
bool lessAsciiForm(std::u16string_view a, std::u16string_view b);

/// The hash of a location's text, over its ASCII form. Programs store these values and caches are keyed
/// by them, so the mixing is written out here: Boost's `hash_combine`, which it equals, changed between
/// releases.
std::uint64_t hashAsciiForm(std::u16string_view text);

}  // namespace foundation::storage::provider::detail
