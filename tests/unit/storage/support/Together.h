#pragma once

#include <cstddef>
#include <latch>
#include <thread>
#include <vector>

namespace foundation::storage::provider::test {

/// Runs `action(number)` in `count` threads that start at once, and waits for all. It must not throw.
template <class Action>
void together(std::size_t count, const Action& action) {
  std::latch start(static_cast<std::ptrdiff_t>(count));
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < count; ++number)
    threads.emplace_back([&start, &action, number] {
      start.arrive_and_wait();
      action(number);
    });
  for (auto& each : threads)
    each.join();
}

}  // namespace foundation::storage::provider::test
