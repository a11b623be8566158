#pragma once

#include <concepts>
#include <functional>
#include <type_traits>

namespace foundation::storage::provider {

/// Something to be called for a truth value, in any form but the one in which attributes keep it.
template <class T>
concept Question = std::is_invocable_r_v<bool, T&> && !std::same_as<T, std::function<bool()>>;

}  // namespace foundation::storage::provider
