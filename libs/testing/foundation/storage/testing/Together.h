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
  std::vector<std::exception_ptr> failures(count);
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < count; ++number)
    threads.emplace_back([&start, &action, &failures, number] {
      start.arrive_and_wait();
      try {
        action(number);
      } catch (...) {
        failures[number] = std::current_exception();
      }
    });
  for (auto& thread : threads)
    thread.join();
  for (const auto& failure : failures)
    if (failure)
      std::rethrow_exception(failure);
}

}  // namespace foundation::storage::testing
