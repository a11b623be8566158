#pragma once

#include "support/Retry.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

/// Programs that are killed at a drawn moment.
namespace foundation::storage::testing {

/// The same draws again: the program prints its seed, and takes one from the environment.
inline std::uint32_t chooseSeed() {
  const char* given = std::getenv("FOUNDATION_TEST_SEED");
  const auto seed = given != nullptr ? static_cast<std::uint32_t>(std::stoul(given)) : std::random_device()();
  std::cout << "FOUNDATION_TEST_SEED=" << seed << std::endl;
  return seed;
}

/// A number below `limit`.
inline std::size_t draw(std::mt19937& random, std::size_t limit) { return random() % limit; }

/// The two ends of a pipe.
class Pipe {
 public:
  Pipe() {
    if (pipe2(ends_.data(), O_CLOEXEC) == -1)
      throw std::runtime_error("no pipe");
  }
  ~Pipe() {
    close(ends_[0]);
    close(ends_[1]);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  void waitForByte() const {
    char byte = 0;
    EXPECT_EQ(retried([&] { return read(ends_[0], &byte, 1); }), 1);
  }
  int input() const { return ends_[1]; }

 private:
  std::array<int, 2> ends_{};
};

/// What the process that is to be killed does: `work`, again and again.
/// @param ready  is written to once it begins
[[noreturn]] inline void repeatUntilKilled(const std::function<void()>& work, int ready) {
  try {
    if (write(ready, "!", 1) == 1)
      for (;;)
        work();
  } catch (const std::exception& failure) {
    std::cerr << "the killed program: " << failure.what() << std::endl;
  }
  _exit(1);
}

/// Does `work` again and again in a process of its own, and kills it after `microseconds`.
/// @return whether it was the kill that ended it
inline bool startAndKill(const std::function<void()>& work, std::size_t microseconds) {
  const Pipe ready;
  const pid_t child = fork();
  if (child == 0)
    repeatUntilKilled(work, ready.input());
  if (child == -1)
    throw std::runtime_error("no process");
  ready.waitForByte();
  const timespec delay{0, static_cast<long>(microseconds * 1000)};
  nanosleep(&delay, nullptr);
  EXPECT_EQ(kill(child, SIGKILL), 0);
  int status = 0;
  EXPECT_EQ(retried([&] { return waitpid(child, &status, 0); }), child);
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

}  // namespace foundation::storage::testing
