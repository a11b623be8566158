#include <foundation/storage/backend/archive/detail/SpilledContent.h>

#include <algorithm>
#include <vector>

namespace foundation::storage::backend::archive::detail {

namespace {

constexpr std::uint64_t blockSize = SpillSpace::blockSize;

/// Calls `action` with the number of each block that a range touches, with the range in it, and where that is in all.
template <class Action>
void forEachBlock(std::uint64_t position, std::size_t count, const Action& action) {
  for (std::size_t done = 0; done < count;) {
    const auto offset = static_cast<std::size_t>((position + done) % blockSize);
    const auto part = std::min<std::size_t>(count - done, blockSize - offset);
    action((position + done) / blockSize, offset, part, done);
    done += part;
  }
}

}  // namespace

void SpilledContent::read(std::uint64_t position, char* buffer, std::size_t count) const {
  forEachBlock(position, count, [&](std::uint64_t number, std::size_t offset, std::size_t part, std::size_t done) {
    if (const auto block = blocks_.find(number); block != blocks_.end())
      space_->read(block->second, offset, buffer + done, part);
    else
      std::fill_n(buffer + done, part, '\0');
  });
}

void SpilledContent::write(std::uint64_t position, const char* bytes, std::size_t count) {
  forEachBlock(position, count, [&](std::uint64_t number, std::size_t offset, std::size_t part, std::size_t done) {
    const auto [block, isNew] = blocks_.try_emplace(number);
    if (isNew)
      block->second = space_->take();
    space_->write(block->second, offset, bytes + done, part);
  });
}

void SpilledContent::cut(std::uint64_t size) {
  const auto offset = static_cast<std::size_t>(size % blockSize);
  dropFrom(size / blockSize + (offset > 0 ? 1 : 0));
  if (const auto last = blocks_.find(size / blockSize); last != blocks_.end()) {
    const std::vector<char> zeros(blockSize - offset);
    space_->write(last->second, offset, zeros.data(), zeros.size());
  }
}

void SpilledContent::dropFrom(std::uint64_t number) noexcept {
  const auto first = blocks_.lower_bound(number);
  for (auto block = first; block != blocks_.end(); ++block)
    space_->giveBack(block->second);
  blocks_.erase(first, blocks_.end());
}

}  // namespace foundation::storage::backend::archive::detail
