#include <foundation/storage/backend/s3/detail/stream/Tasks.h>

#include <chrono>
#include <exception>
#include <utility>

namespace foundation::storage::backend::s3::detail::stream {

using namespace std::chrono_literals;

Tasks::~Tasks() { waitForFewerThan(1); }

void Tasks::start(std::function<void()> task) {
  std::erase_if(started_, [](const auto& future) { return future.wait_for(0s) == std::future_status::ready; });
  started_.reserve(started_.size() + 1);
  auto run = [this, task = std::move(task)]() mutable {
    task();
    task = nullptr;  // with what it holds; the future would keep it
    const std::lock_guard lock(mutex_);
    --running_;
    ended_.notify_all();
  };
  {
    const std::lock_guard lock(mutex_);
    ++running_;
  }
  try {
    started_.push_back(std::async(std::launch::async, run));
  } catch (const std::exception&) {  // no thread, or no memory for one
    run();
  }
}

void Tasks::waitForFewerThan(unsigned count, const std::function<void()>& ask) {
  const auto areFew = [this, count] { return running_ < count; };
  for (;;) {
    if (ask)
      ask();
    std::unique_lock lock(mutex_);
    if (!ask)
      return ended_.wait(lock, areFew);
    if (ended_.wait_for(lock, 50ms, areFew))
      return;
  }
}

}  // namespace foundation::storage::backend::s3::detail::stream
