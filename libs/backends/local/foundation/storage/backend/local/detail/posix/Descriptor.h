#pragma once

#include <utility>

namespace foundation::storage::backend::local::detail {

/// Owns a file descriptor.
class Descriptor {
 public:
  Descriptor() noexcept = default;
  explicit Descriptor(int number) noexcept : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  /// Keeps errno, which may say why something else failed.
  ~Descriptor();

  int get() const noexcept { return number_; }
  bool isOpen() const noexcept { return number_ >= 0; }

  /// Closes it, if it is open.
  /// @return 0 or the error number; it is closed in any case (close(2), "Dealing with error returns")
  int close() noexcept;

 private:
  int number_ = -1;
};

}  // namespace foundation::storage::backend::local::detail
