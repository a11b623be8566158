#pragma once

#include <atomic>
#include <cstdint>

namespace foundation::storage::provider::detail {

/// Lets one of several threads do a piece of work while the others wait for it, in one byte. Work that
/// throws counts as not done, and the next thread tries again. The work must not run itself.
class OnceState {
 public:
  explicit OnceState(bool isDone = false) noexcept : step_(isDone ? Step::Done : Step::Open) {}

  bool isDone() const noexcept { return step_.load(std::memory_order_acquire) == Step::Done; }

  /// Not to be called while others may run.
  void set(bool isDone) noexcept { step_.store(isDone ? Step::Done : Step::Open, std::memory_order_release); }

  /// Returns once the work is done, by this thread or another.
  template <class Work>
  void run(const Work& work) {
    while (!isDone()) {
      auto step = Step::Open;
      if (step_.compare_exchange_strong(step, Step::Running, std::memory_order_acquire))
        return runClaimed(work);
      if (step == Step::Running)
        step_.wait(step, std::memory_order_acquire);
    }
  }

 private:
  enum class Step : std::uint8_t { Open, Running, Done };

  template <class Work>
  void runClaimed(const Work& work) {
    try {
      work();
    } catch (...) {
      leave(Step::Open);
      throw;
    }
    leave(Step::Done);
  }

  void leave(Step step) noexcept {
    step_.store(step, std::memory_order_release);
    step_.notify_all();
  }

  std::atomic<Step> step_;
};

}  // namespace foundation::storage::provider::detail
