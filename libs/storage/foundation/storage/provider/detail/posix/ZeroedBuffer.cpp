#include <foundation/storage/provider/detail/ZeroedBuffer.h>

#include <new>
#include <sys/mman.h>

namespace foundation::storage::provider::detail {

ZeroedBuffer::ZeroedBuffer(std::size_t size) : size_(size) {
  void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED)
    throw std::bad_alloc();
  // Without huge pages, as far as the system has them: one of those would be cleared for a single byte.
  madvise(memory, size, MADV_NOHUGEPAGE);
  data_ = static_cast<char*>(memory);
}

ZeroedBuffer::~ZeroedBuffer() { munmap(data_, size_); }

}  // namespace foundation::storage::provider::detail
