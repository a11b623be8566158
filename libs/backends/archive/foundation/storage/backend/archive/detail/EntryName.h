#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::archive::detail {

using Names = std::vector<std::u16string>;

/// How many names deep an entry may lie.
inline constexpr std::size_t deepest = 4096;

/// The names that lead to an entry, from what an archive calls it; none where the entry is to be hidden: nothing in the
/// archive may be reached, or copied out, under a name that leads elsewhere.
/// @param name  bytes
std::optional<Names> parseEntryName(std::string_view name);

/// The bytes for names, with '/' between them.
std::string formatEntryName(const Names& names);

/// Whether a name consists of bytes as an archive keeps them: no lone surrogate but those that stand for bytes.
bool isStorable(std::u16string_view name);

bool isUtf8(std::string_view bytes);

}  // namespace foundation::storage::backend::archive::detail
