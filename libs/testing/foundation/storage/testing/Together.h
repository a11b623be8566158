#pragma once

#include <cstddef>
#include <exception>
#include <latch>
#include <thread>
#include <vector>

namespace foundation::storage::testing {

/// Runs `action(number)` in `count` threads that start at once, and waits for all. What a thread throws is
/// thrown here, once all have ended; of several failures the one of the lowest number.
template <class Action>
void together(std::size_t count, const Action& action) {
  std::latch start(static_cast<std::ptrdiff_t>(count));
  std::vector<std::exception_ptr> failures(count + 1);
  std::vector<std::thread> threads;
  threads.reserve(count);
  const auto run = [&start, &action, &failures](std::size_t number) {
    start.arrive_and_wait();
    try {
      action(number);
    } catch (...) {
      failures[number] = std::current_exception();
    }
  };
  try {
    while (threads.size() < count)
      threads.emplace_back(run, threads.size());
  } catch (...) {  // those that could not be started are not to be waited for
    failures[count] = std::current_exception();
    start.count_down(static_cast<std::ptrdiff_t>(count - threads.size()));
  }
  for (auto& thread : threads)
    thread.join();
  for (const auto& failure : failures)
    if (failure)
      std::rethrow_exception(failure);
}

}  // namespace foundation::storage::testing
