#pragma once

#include <foundation/core/Export.h>

#include <atomic>
#include <cstdint>
#include <functional>

namespace foundation::storage::provider::detail {

/// A truth value that may cost something to find out: either known, or a function that is called on
/// the first request. Concurrent first requests call it once and all get its answer; a function that
/// throws is called again on the next request.
class FOUNDATION_EXPORT LazyFlag {
 public:
  explicit LazyFlag(bool value) noexcept : state_(value ? State::Yes : State::No) {}
  explicit LazyFlag(std::function<bool()> find) noexcept : state_(State::Unknown), find_(std::move(find)) {}
  LazyFlag(const LazyFlag&) = delete;
  LazyFlag& operator=(const LazyFlag&) = delete;

  bool get() const {
    const auto state = state_.load(std::memory_order_acquire);
    return state == State::Yes || (state != State::No && find());
  }

  /// Not to be called while others may ask.
  void set(bool value) noexcept;
  void set(std::function<bool()> find) noexcept;

 private:
  enum class State : std::uint8_t { Unknown, Asking, No, Yes };

  bool find() const;
  void leave(State state) const noexcept;

  mutable std::atomic<State> state_;
  std::function<bool()> find_;
};

}  // namespace foundation::storage::provider::detail
