#pragma once

#include <string>

namespace foundation::storage::provider::test {

/// The text of the `Failure` that `action` throws. Anything else that it throws fails the test.
template <class Failure, class Action>
std::string textThrownBy(const Action& action) {
  try {
    action();
  } catch (const Failure& failure) {
    return failure.what();
  }
  return "nothing was thrown";
}

}  // namespace foundation::storage::provider::test
