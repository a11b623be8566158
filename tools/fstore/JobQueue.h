#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace fstore {

/// Does jobs on several threads at once, in no certain order. Few jobs wait at a time, so that they cost little memory
/// however many there are. For one thread to use.
class JobQueue {
 public:
  using Job = std::function<void()>;

  /// @param threads  1: each job is done at once by whoever adds it, and so it is where the system gives no thread
  explicit JobQueue(unsigned threads);
  /// Waits for the jobs that have begun; the others are dropped.
  ~JobQueue();
  JobQueue(const JobQueue&) = delete;
  JobQueue& operator=(const JobQueue&) = delete;

  bool isParallel() const { return !threads_.empty(); }

  /// Waits while too many jobs do. Throws what an earlier job threw; no more jobs begin then.
  void add(Job job);
  /// Waits until all jobs are done. Throws as `add` does.
  void finish();

 private:
  void work();
  void doOne(std::unique_lock<std::mutex>& lock);
  void rethrow();

  std::mutex mutex_;  ///< guards all but the threads
  std::condition_variable hasChanged_;
  std::deque<Job> waiting_;
  std::size_t running_ = 0;
  bool isEnding_ = false;
  std::exception_ptr failure_;
  std::vector<std::thread> threads_;
};

}  // namespace fstore
