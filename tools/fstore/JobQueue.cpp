#include <fstore/JobQueue.h>

#include <system_error>
#include <utility>

namespace fstore {
namespace {

constexpr std::size_t waitingPerThread = 4;

}  // namespace

JobQueue::JobQueue(unsigned threads) {
  threads_.reserve(threads);
  try {
    for (unsigned i = 0; threads > 1 && i < threads; ++i)
      threads_.emplace_back([this] { work(); });
  } catch (const std::system_error&) {  // no more threads to be had: fewer do it, too
  }
}

JobQueue::~JobQueue() {
  {
    const std::scoped_lock lock(mutex_);
    waiting_.clear();
    isEnding_ = true;
  }
  hasChanged_.notify_all();
  for (auto& thread : threads_)
    thread.join();
}

void JobQueue::add(Job job) {
  if (!isParallel())
    return job();
  std::unique_lock lock(mutex_);
  hasChanged_.wait(lock, [&] { return failure_ || waiting_.size() < threads_.size() * waitingPerThread; });
  rethrow();
  waiting_.push_back(std::move(job));
  lock.unlock();
  hasChanged_.notify_all();
}

void JobQueue::finish() {
  std::unique_lock lock(mutex_);
  hasChanged_.wait(lock, [&] { return running_ == 0 && (failure_ || waiting_.empty()); });
  rethrow();
}

void JobQueue::rethrow() {
  if (failure_)
    std::rethrow_exception(failure_);
}

void JobQueue::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    hasChanged_.wait(lock, [&] { return isEnding_ || (!failure_ && !waiting_.empty()); });
    if (isEnding_)
      return;
    doOne(lock);
    hasChanged_.notify_all();
  }
}

void JobQueue::doOne(std::unique_lock<std::mutex>& lock) {
  const auto job = std::move(waiting_.front());
  waiting_.pop_front();
  ++running_;
  lock.unlock();
  std::exception_ptr failure;
  try {
    job();
  } catch (...) {
    failure = std::current_exception();
  }
  lock.lock();
  if (!failure_)
    failure_ = failure;
  --running_;
}

}  // namespace fstore
