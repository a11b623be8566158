#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

namespace foundation::storage::provider::detail {

/// Aligned memory full of zeros. It is asked of the allocator as zeros, so of a big buffer only the
/// pages that are used ever cost anything.
class ZeroedBuffer {
 public:
  /// @param size       in bytes
  /// @param alignment  a power of two. Throws `std::bad_alloc`.
  ZeroedBuffer(std::size_t size, std::size_t alignment) : memory_(std::calloc(size + alignment - 1, 1)) {
    if (memory_ == nullptr)
      throw std::bad_alloc();
    void* begin = memory_.get();
    std::size_t space = size + alignment - 1;
    data_ = static_cast<char*>(std::align(alignment, size, begin, space));
  }

  char* data() const { return data_; }

 private:
  struct Free {
    void operator()(void* memory) const { std::free(memory); }
  };
  std::unique_ptr<void, Free> memory_;
  char* data_ = nullptr;
};

}  // namespace foundation::storage::provider::detail
