#pragma once

#include <cerrno>
#include <type_traits>

namespace foundation::storage::backend::local::detail {

/// A system call, made again as long as a signal interrupts it: some file systems let any call be interrupted.
template <class Signature>
class SystemCall;

template <class Result, class... Arguments>
class SystemCall<Result(Arguments...)> {
 public:
  using Function = Result (*)(Arguments...) noexcept;

  constexpr SystemCall() noexcept = default;
  // Tables are filled with functions, and with lambdas that convert to them.
  template <class Callable>
  requires std::is_convertible_v<Callable, Function>
  constexpr SystemCall(Callable function) noexcept : function_(function) {}

  Result operator()(Arguments... arguments) const noexcept {
    auto result = function_(arguments...);
    while (hasFailed(result) && errno == EINTR)
      result = function_(arguments...);
    return result;
  }

 private:
  static bool hasFailed(Result result) noexcept {
    if constexpr (std::is_pointer_v<Result>)
      return result == nullptr;
    else
      return result == -1;
  }

  Function function_ = nullptr;
};

}  // namespace foundation::storage::backend::local::detail
