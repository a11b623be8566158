#include <foundation/storage/backend/memory/detail/Space.h>

#include <algorithm>

namespace foundation::storage::backend::memory::detail {

std::uint64_t Space::take(std::uint64_t bytes) {
  const std::scoped_lock lock(mutex_);
  const auto taken = std::min(bytes, capacity_ - std::min(capacity_, occupied_));
  occupied_ += taken;
  return taken;
}

void Space::giveBack(std::uint64_t bytes) {
  const std::scoped_lock lock(mutex_);
  occupied_ -= bytes;
}

void Space::setCapacity(std::uint64_t bytes) {
  const std::scoped_lock lock(mutex_);
  capacity_ = bytes;
}

std::uint64_t Space::capacity() const {
  const std::scoped_lock lock(mutex_);
  return capacity_;
}

std::uint64_t Space::occupied() const {
  const std::scoped_lock lock(mutex_);
  return occupied_;
}

}  // namespace foundation::storage::backend::memory::detail
