#include <fstore/StopSignal.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace fstore {
namespace {

// What a signal's handler may use.
std::atomic<int> askingSignal{0};
std::atomic<int> wakeUpDescriptor{-1};

void wakeUpSleeper(int descriptor) {
  const std::uint64_t one = 1;
  // It fails only where more wake-ups than can be counted are under way.
  (void)!write(descriptor, &one, sizeof one);
}

/// As if the signal had never been handled.
[[noreturn]] void endBy(int signal) {
  sigset_t itself;
  sigemptyset(&itself);
  sigaddset(&itself, signal);
  std::signal(signal, SIG_DFL);
  pthread_sigmask(SIG_UNBLOCK, &itself, nullptr);
  raise(signal);
  _exit(128 + signal);  // the first process of a container outlives its own signals
}

extern "C" void askToStop(int signal) {
  const int error = errno;  // of whatever the signal has interrupted
  // A terminal that closes may say so twice.
  if (askingSignal.exchange(signal) != 0 && signal != SIGHUP)
    endBy(signal);
  wakeUpSleeper(wakeUpDescriptor);
  errno = error;
}

bool isIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void handle(int signal) {
  struct sigaction action {};
  action.sa_handler = askToStop;
  sigemptyset(&action.sa_mask);
  if (sigaction(signal, &action, nullptr) == -1)
    throw std::system_error(errno, std::generic_category(), "sigaction");
}

}  // namespace

StopSignal::StopSignal() : wakeUp_(eventfd(0, EFD_CLOEXEC)) {
  if (wakeUp_ == -1)
    throw std::system_error(errno, std::generic_category(), "eventfd");
  wakeUpDescriptor = wakeUp_;
  handle(SIGINT);
  handle(SIGTERM);
  if (!isIgnored(SIGHUP))  // nohup(1)
    handle(SIGHUP);
}

StopSignal::~StopSignal() {
  wakeUpDescriptor = -1;
  close(wakeUp_);
}

int StopSignal::number() const { return askingSignal; }

void StopSignal::endProgram() const { endBy(number()); }

void StopSignal::wait() const {
  std::uint64_t count = 0;
  if (read(wakeUp_, &count, sizeof count) == -1 && errno != EINTR)
    throw std::system_error(errno, std::generic_category(), "read");
}

void StopSignal::wakeUp() const { wakeUpSleeper(wakeUp_); }

}  // namespace fstore
