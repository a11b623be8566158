#include <foundation/storage/backend/archive/detail/SpillSpace.h>

#include <algorithm>
#include <new>

namespace foundation::storage::backend::archive::detail {

std::shared_ptr<SpillSpace> SpillSpace::shared() {
  static std::mutex mutex;
  static std::weak_ptr<SpillSpace> inUse;
  const std::scoped_lock lock(mutex);
  auto space = inUse.lock();
  if (!space)
    inUse = space = std::make_shared<SpillSpace>();
  return space;
}

std::uint64_t SpillSpace::take() noexcept {
  const std::scoped_lock lock(mutex_);
  if (free_.empty())
    return next_++;
  const auto block = free_.back();
  free_.pop_back();
  return block;
}

void SpillSpace::giveBack(std::uint64_t block) noexcept {
  // What cannot be emptied is not used again: it would not read as zeros.
  if (!file_.discard(block * blockSize, blockSize))
    return;
  const std::scoped_lock lock(mutex_);
  try {
    free_.push_back(block);
  } catch (const std::bad_alloc&) {  // then it is not used again, either
  }
}

void SpillSpace::read(std::uint64_t block, std::size_t offset, char* buffer, std::size_t count) const {
  const auto got = file_.read(block * blockSize + offset, buffer, count);
  std::fill(buffer + got, buffer + count, '\0');  // the file may end in its last block
}

void SpillSpace::write(std::uint64_t block, std::size_t offset, const char* bytes, std::size_t count) {
  file_.write(block * blockSize + offset, bytes, count);
}

}  // namespace foundation::storage::backend::archive::detail
