#pragma once

#include "ReplacedCalls.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <type_traits>

namespace foundation::storage::backend::local {

/// The system calls, of which one fails: the next but so many. Calls are counted from the construction of the object
/// on, over all threads.
class FaultySystem {
 public:
  /// @param index  how many calls succeed before the one that fails
  FaultySystem(int index, int error) : replaced_(faultyCalls()) {
    left = index;
    error_ = error;
    hasFailed_ = false;
  }
  ~FaultySystem() { left = -1; }

  bool hasFailed() const { return hasFailed_; }

 private:
  using Calls = detail::SystemCalls;

  template <auto Member, class Result, class... Arguments>
  static Result faulty(Arguments... arguments) noexcept {
    if (!isTurn())
      return (detail::realSystemCalls.*Member)(arguments...);
    if constexpr (std::is_pointer_v<Result>)
      return nullptr;
    else
      return -1;
  }

  template <auto Member, class Result, class... Arguments>
  static void replace(Calls& calls, const detail::SystemCall<Result(Arguments...)>&) {
    calls.*Member = faulty<Member, Result, Arguments...>;
  }

  static bool isTurn() noexcept {
    const bool fails = left.fetch_sub(1) == 0;
    if (fails) {
      hasFailed_ = true;
      errno = error_;
    }
    return fails;
  }

  /// A descriptor is closed even where close(2) says that it failed.
  static int faultyClose(int file) noexcept {
    const int result = detail::realSystemCalls.close(file);
    return isTurn() ? -1 : result;
  }

  template <auto... Members>
  static Calls withFaulty() {
    Calls calls = detail::realSystemCalls;
    (replace<Members>(calls, calls.*Members), ...);
    calls.close = faultyClose;
    return calls;
  }

  static Calls faultyCalls() {
    return withFaulty<&Calls::openat, &Calls::openBeneath, &Calls::read, &Calls::write, &Calls::lseek,
                      &Calls::ftruncate, &Calls::fsync, &Calls::cloneContent, &Calls::copyFileRange, &Calls::getdents,
                      &Calls::fileFlags, &Calls::setFileFlags, &Calls::fstat, &Calls::fstatat, &Calls::faccessat,
                      &Calls::readlinkat, &Calls::realpath, &Calls::statvfs, &Calls::fileSystemType, &Calls::inodeFlags,
                      &Calls::mkdirat, &Calls::mknodat, &Calls::symlinkat, &Calls::linkat, &Calls::unlinkat,
                      &Calls::renameat, &Calls::chmod, &Calls::fchmod, &Calls::fchownat, &Calls::fchown,
                      &Calls::utimensat, &Calls::futimens, &Calls::listxattr, &Calls::getxattr, &Calls::fsetxattr,
                      &Calls::fgetxattr, &Calls::fremovexattr, &Calls::eventfd, &Calls::poll, &Calls::inotifyInit,
                      &Calls::inotifyAddWatch, &Calls::inotifyRemoveWatch>();
  }

  static inline std::atomic<int> left = -1;
  static inline std::atomic<int> error_ = 0;
  static inline std::atomic<bool> hasFailed_ = false;

  const ReplacedCalls replaced_;
};

}  // namespace foundation::storage::backend::local
