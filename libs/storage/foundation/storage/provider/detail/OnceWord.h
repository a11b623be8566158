#pragma once

#include <atomic>
#include <cstdint>

namespace foundation::storage::provider::detail {

/// A word that is computed on the first request and kept. Concurrent first requests compute it once and
/// all get the result; later ones take no lock. A producer that throws leaves it empty, so that the next
/// request tries again. A producer must not ask for the word that it is computing.
///
/// Two of the 2^64 values serve as marks; a result that happens to be one of them is not kept.
class OnceWord {
 public:
  template <class Producer>
  std::uint64_t get(const Producer& produce) const {
    const auto known = word_.load(std::memory_order_acquire);
    return known > computing ? known : compute(produce);
  }

  /// The word, or 0 where there is none. Not to be called while others may ask for it.
  std::uint64_t peek() const noexcept { return word_.load(std::memory_order_acquire); }

 private:
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
      const std::uint64_t word = produce();
      leave(word > computing ? word : empty);
      return word;
    } catch (...) {
      leave(empty);
      throw;
    }
  }

  void leave(std::uint64_t word) const noexcept {
    word_.exchange(word, std::memory_order_release);
    word_.notify_all();
  }

  mutable std::atomic<std::uint64_t> word_{empty};
};

}  // namespace foundation::storage::provider::detail
