#pragma once

#include <foundation/storage/provider/detail/OnceState.h>

#include <functional>
#include <utility>

namespace foundation::storage::provider::detail {

/// A truth value that may cost something to find out: either known, or a function that is called on
/// the first request. Concurrent first requests call it once and all get its answer; a function that
/// throws is called again on the next request (an empty one throws `std::bad_function_call`).
class LazyFlag {
 public:
  explicit LazyFlag(bool value) noexcept : once_(true), value_(value) {}
  explicit LazyFlag(std::function<bool()> find) noexcept : find_(std::move(find)) {}

  bool get() const {
    once_.run([this] {
      value_ = find_();
      find_ = nullptr;  // with all that it held
    });
    return value_;
  }

  /// Not to be called while others may ask.
  void set(bool value) noexcept {
    find_ = nullptr;
    value_ = value;
    once_.set(true);
  }
  void set(std::function<bool()> find) noexcept {
    find_ = std::move(find);
    once_.set(false);
  }

 private:
  mutable OnceState once_;
  mutable bool value_ = false;
  mutable std::function<bool()> find_;
};

}  // namespace foundation::storage::provider::detail
