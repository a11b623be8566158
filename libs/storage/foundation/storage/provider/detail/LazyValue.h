#pragma once

#include <atomic>
#include <cstdint>

namespace foundation::storage::provider::detail {

/// A value that is computed on the first request and kept. Concurrent first requests compute it once
/// and all get the result; later ones take no lock. A producer that throws leaves the value empty, so
/// that the next request tries again.
///
/// It takes one word until it is computed: locations hold many of these, and most are never asked for.
/// For the same reason the producer is not stored but handed in by the one accessor that owns the value.
/// A producer must not ask for the value that it is computing.
template <class T>
class LazyValue {
 public:
  LazyValue() noexcept = default;
  LazyValue(const LazyValue&) = delete;
  LazyValue& operator=(const LazyValue&) = delete;
  ~LazyValue() {
    if (const auto state = state_.load(std::memory_order_acquire); state != empty)
      delete toPointer(state);
  }

  /// The value, computed by `produce()` if this is the first request.
  template <class Producer>
  const T& get(const Producer& produce) const {
    const auto state = state_.load(std::memory_order_acquire);
    return state > computing ? *toPointer(state) : compute(produce);
  }

 private:
  static constexpr std::uintptr_t empty = 0;
  static constexpr std::uintptr_t computing = 1;

  static std::uintptr_t toState(const T* value) { return reinterpret_cast<std::uintptr_t>(value); }
  static const T* toPointer(std::uintptr_t state) { return reinterpret_cast<const T*>(state); }

  template <class Producer>
  const T& compute(const Producer& produce) const {
    for (;;) {
      auto state = empty;
      if (state_.compare_exchange_strong(state, computing, std::memory_order_acquire))
        return publish(produce);
      if (state != computing)
        return *toPointer(state);
      state_.wait(computing, std::memory_order_acquire);
    }
  }

  template <class Producer>
  const T& publish(const Producer& produce) const {
    try {
      const T* value = new T(produce());
      leave(toState(value));
      return *value;
    } catch (...) {
      leave(empty);
      throw;
    }
  }

  void leave(std::uintptr_t state) const noexcept {
    state_.exchange(state, std::memory_order_release);
    state_.notify_all();
  }

  mutable std::atomic<std::uintptr_t> state_{empty};
};

}  // namespace foundation::storage::provider::detail
