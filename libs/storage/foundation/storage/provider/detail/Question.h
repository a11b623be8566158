#pragma once

#include <concepts>
#include <functional>
#include <type_traits>

namespace foundation::storage::provider::detail {

/// Something to be called for a truth value that is not yet in the form in which it is kept.
template <class T>
concept Question = std::is_invocable_r_v<bool, T&> && !std::same_as<T, std::function<bool()>>;

}  // namespace foundation::storage::provider::detail
