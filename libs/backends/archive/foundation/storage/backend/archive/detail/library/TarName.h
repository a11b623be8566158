#pragma once

#include <string_view>
#include <vector>

namespace foundation::storage::backend::archive::detail::library {

/// How a new tar of that name is to be compressed.
/// @return libarchive's codes of the filters, from the innermost to the outermost
std::vector<int> filtersByName(std::u16string_view name);

}  // namespace foundation::storage::backend::archive::detail::library
