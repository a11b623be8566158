#pragma once

#include <cerrno>

namespace foundation::storage::testing {

/// The result of `call()`, made again as long as a signal interrupts it.
template <class Call>
auto retried(const Call& call) {
  auto result = call();
  while (result == -1 && errno == EINTR)
    result = call();
  return result;
}

}  // namespace foundation::storage::testing
