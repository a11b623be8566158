#pragma once

#include <atomic>
#include <cstdint>

namespace foundation::storage::provider::detail {

/// A hash value that is computed on the first request and kept, in one word. Concurrent first requests
/// compute it once; a producer that throws leaves it uncomputed.
class LazyHash {
 public:
  template <class Producer>
  std::uint64_t get(const Producer& produce) const {
    const auto known = word_.load(std::memory_order_acquire);
    return known > computing ? known : compute(produce);
  }

 private:
  // Two of the 2^64 values serve as marks. A hash that happens to be one of them is not kept.
  static constexpr std::uint64_t empty = 0;
  static constexpr std::uint64_t computing = 1;

  template <class Producer>
  std::uint64_t compute(const Producer& produce) const {
    for (;;) {
      auto word = empty;
      if (word_.compare_exchange_strong(word, computing, std::memory_order_acquire))
        return publish(produce);
      if (word != computing)
        return word;
      word_.wait(computing, std::memory_order_acquire);
    }
  }

  template <class Producer>
  std::uint64_t publish(const Producer& produce) const {
    try {
      const std::uint64_t hash = produce();
      leave(hash > computing ? hash : empty);
      return hash;
    } catch (...) {
      leave(empty);
      throw;
    }
  }

  void leave(std::uint64_t word) const noexcept {
    word_.store(word, std::memory_order_release);
    word_.notify_all();
  }

  mutable std::atomic<std::uint64_t> word_{empty};
};

}  // namespace foundation::storage::provider::detail
