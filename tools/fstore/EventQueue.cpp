#include <fstore/EventQueue.h>

#include <boost/property_tree/ptree.hpp>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace fstore {
namespace {

int required(int descriptor, const char* call) {
  if (descriptor == -1)
    throw std::system_error(errno, std::generic_category(), call);
  return descriptor;
}

int openSignals() {
  sigset_t stopping;
  sigemptyset(&stopping);
  sigaddset(&stopping, SIGINT);
  sigaddset(&stopping, SIGTERM);
  if (const int error = pthread_sigmask(SIG_BLOCK, &stopping, nullptr))
    throw std::system_error(error, std::generic_category(), "pthread_sigmask");
  return required(signalfd(-1, &stopping, SFD_CLOEXEC), "signalfd");
}

}  // namespace

EventQueue::EventQueue() : signals_(openSignals()), wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (wakeUp_ == -1) {
    const int error = errno;
    close(signals_);
    throw std::system_error(error, std::generic_category(), "eventfd");
  }
}

EventQueue::~EventQueue() {
  close(signals_);
  close(wakeUp_);
}

foundation::storage::provider::ChangeCallback EventQueue::callback() {
  return [this](const auto& kind, const auto& watched, const auto& subject, const auto& type, const auto&) {
    {
      const std::scoped_lock lock(mutex_);
      events_.push_back({kind, watched, subject, type});
    }
    const std::uint64_t one = 1;
    // It fails only where more wake-ups than can be counted are under way.
    (void)!write(wakeUp_, &one, sizeof one);
  };
}

bool EventQueue::waitForEvents() const {
  std::array<pollfd, 2> waited{{{signals_, POLLIN, 0}, {wakeUp_, POLLIN, 0}}};
  while (poll(waited.data(), waited.size(), -1) == -1)
    if (errno != EINTR)
      throw std::system_error(errno, std::generic_category(), "poll");
  return waited[0].revents == 0;
}

std::vector<Event> EventQueue::next() {
  std::vector<Event> arrived;
  while (arrived.empty() && waitForEvents()) {
    std::uint64_t count = 0;
    (void)!read(wakeUp_, &count, sizeof count);
    const std::scoped_lock lock(mutex_);
    arrived = std::exchange(events_, {});
  }
  return arrived;
}

}  // namespace fstore
