#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace foundation::storage::backend::local::detail {

/// A mutex that threads get in the order in which they ask for it. So a thread that gives it back only to take
/// it again at once, as one does that works off a queue, cannot keep the others waiting.
class FairMutex {
 public:
  void lock() {
    std::unique_lock guard(mutex_);
    const auto turn = next_++;
    changed_.wait(guard, [this, turn] { return turn == current_; });
  }

  void unlock() {
    {
      const std::scoped_lock guard(mutex_);
      ++current_;
    }
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t next_ = 0;
  std::uint64_t current_ = 0;
};

}  // namespace foundation::storage::backend::local::detail
