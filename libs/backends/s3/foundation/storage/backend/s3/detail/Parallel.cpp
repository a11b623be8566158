#include <foundation/storage/backend/s3/detail/Parallel.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace foundation::storage::backend::s3::detail {

namespace {

/// What the threads share.
class Work {
 public:
  Work(std::size_t count, const std::function<void(std::size_t)>& action) : count_(count), action_(action) {}

  void run() noexcept {
    for (std::size_t number = next_++; number < count_ && !hasFailed_; number = next_++)
      try {
        action_(number);
      } catch (...) {
        const std::scoped_lock lock(mutex_);
        if (!hasFailed_.exchange(true))
          failure_ = std::current_exception();
      }
  }

  void finish() const {
    if (failure_)
      std::rethrow_exception(failure_);
  }

 private:
  const std::size_t count_;
  const std::function<void(std::size_t)>& action_;
  std::atomic<std::size_t> next_ = 0;
  std::atomic<bool> hasFailed_ = false;
  std::mutex mutex_;  ///< guards the failure
  std::exception_ptr failure_;
};

}  // namespace

void inParallel(std::size_t count, unsigned most, const std::function<void(std::size_t)>& action) {
  Work work(count, action);
  {
    std::vector<std::jthread> helpers;
    try {
      while (helpers.size() + 1 < std::min<std::size_t>(count, most))
        helpers.emplace_back([&work] { work.run(); });
    } catch (const std::system_error&) {  // the system gives no more threads: those that there are do it all
    }
    work.run();
  }
  work.finish();
}

}  // namespace foundation::storage::backend::s3::detail
