#pragma once

#include <cstddef>

namespace foundation::storage::provider::detail {

/// Memory full of zeros, aligned to a page. It comes from the system, not from the allocator, which would clear
/// what it has used before: so of a big buffer only the pages that are used ever cost anything.
class ZeroedBuffer {
 public:
  /// @param size  in bytes, not 0. Throws `std::bad_alloc`.
  explicit ZeroedBuffer(std::size_t size);
  ~ZeroedBuffer();
  ZeroedBuffer(const ZeroedBuffer&) = delete;
  ZeroedBuffer& operator=(const ZeroedBuffer&) = delete;

  char* data() const noexcept { return data_; }

 private:
  std::size_t size_;
  char* data_;
};

}  // namespace foundation::storage::provider::detail
