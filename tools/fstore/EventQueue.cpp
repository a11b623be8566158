#include <fstore/EventQueue.h>

#include <boost/property_tree/ptree.hpp>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace fstore {
namespace {

// What a signal's handler may use.
std::atomic<bool> isToStop{false};
std::atomic<int> wakeUpDescriptor{-1};

void wakeUp() {
  const std::uint64_t one = 1;
  // It fails only where more wake-ups than can be counted are under way.
  (void)!write(wakeUpDescriptor, &one, sizeof one);
}

extern "C" void askToStop(int signal) {
  const int error = errno;  // of whatever the signal has interrupted
  if (isToStop.exchange(true))
    _exit(128 + signal);
  wakeUp();
  errno = error;
}

void handle(int signal) {
  struct sigaction action {};
  action.sa_handler = askToStop;
  sigemptyset(&action.sa_mask);
  if (sigaction(signal, &action, nullptr) == -1)
    throw std::system_error(errno, std::generic_category(), "sigaction");
}

}  // namespace

EventQueue::EventQueue() : wakeUp_(eventfd(0, EFD_CLOEXEC)) {
  if (wakeUp_ == -1)
    throw std::system_error(errno, std::generic_category(), "eventfd");
  wakeUpDescriptor = wakeUp_;
  handle(SIGINT);
  handle(SIGTERM);
}

EventQueue::~EventQueue() {
  wakeUpDescriptor = -1;
  close(wakeUp_);
}

foundation::storage::provider::ChangeCallback EventQueue::callback() {
  return [this](const auto& kind, const auto& watched, const auto& subject, const auto& type, const auto&) {
    {
      const std::scoped_lock lock(mutex_);
      events_.push_back({kind, watched, subject, type});
    }
    wakeUp();
  };
}

std::vector<Event> EventQueue::next() {
  for (;;) {
    {
      const std::scoped_lock lock(mutex_);
      if (!events_.empty() || isToStop)
        return std::exchange(events_, {});
    }
    std::uint64_t count = 0;
    if (read(wakeUp_, &count, sizeof count) == -1 && errno != EINTR)
      throw std::system_error(errno, std::generic_category(), "read");
  }
}

}  // namespace fstore
