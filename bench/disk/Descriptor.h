#pragma once

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <system_error>
#include <unistd.h>

namespace bench {

/// Throws `std::system_error` of errno(3) unless it went well.
inline void check(bool wentWell, const std::string& what) {
  if (!wentWell)
    throw std::system_error(errno, std::generic_category(), what);
}

inline void check(bool wentWell, const char* what) {
  if (!wentWell)
    check(false, std::string(what));
}

/// An open file.
class Descriptor {
 public:
  /// Throws `std::system_error`.
  Descriptor(const std::string& path, int flags, mode_t mode = 0666)
      : Descriptor(AT_FDCWD, path.c_str(), flags, mode) {}
  Descriptor(int folder, const char* name, int flags, mode_t mode = 0666)
      : number_(openat(folder, name, flags | O_CLOEXEC, mode)) {
    check(number_ != -1, name);
  }
  ~Descriptor() { ::close(number_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return number_; }

 private:
  int number_;
};

}  // namespace bench
