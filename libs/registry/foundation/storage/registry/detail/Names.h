#pragma once

#include <string>
#include <string_view>

namespace foundation::storage::registry::detail {

/// The form of a scheme or prefix by which it is compared. What is neither stays as it is.
std::u16string comparableName(std::u16string_view name);

}  // namespace foundation::storage::registry::detail
