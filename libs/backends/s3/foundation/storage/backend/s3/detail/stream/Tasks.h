#pragma once

#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <vector>

namespace foundation::storage::backend::s3::detail::stream {

/// Tasks of one stream, each on a thread of its own. Streams share no threads, so that none has to wait for another;
/// what is sent takes so much longer than to start a thread that keeping threads would save nothing. For one thread at
/// a time.
class Tasks {
 public:
  Tasks() = default;
  /// Waits for all.
  ~Tasks();
  Tasks(const Tasks&) = delete;
  Tasks& operator=(const Tasks&) = delete;

  /// Has `task` run, here and now where there is no thread to be had.
  /// @param task  throws nothing
  void start(std::function<void()> task);

  /// Waits until fewer than so many are left.
  /// @param ask  called first, and 20 times a second; what it throws ends the waiting
  void waitForFewerThan(unsigned count, const std::function<void()>& ask = {});

 private:
  std::mutex mutex_;
  std::condition_variable ended_;
  unsigned running_ = 0;  ///< guarded by the mutex
  std::vector<std::future<void>> started_;
};

}  // namespace foundation::storage::backend::s3::detail::stream
