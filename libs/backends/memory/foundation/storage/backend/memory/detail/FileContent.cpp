#include <foundation/storage/backend/memory/detail/FileContent.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <algorithm>
#include <mutex>
#include <utility>

namespace foundation::storage::backend::memory::detail {
namespace {

constexpr std::uint64_t blockSize = std::uint64_t{64} * 1024;

}  // namespace

boost::posix_time::ptime now() { return boost::posix_time::microsec_clock::universal_time(); }

FileContent::FileContent(std::shared_ptr<Space> space) : space_(std::move(space)), lastModified_(now()) {}
FileContent::~FileContent() { space_->giveBack(size_); }

std::uint64_t FileContent::size() const {
  const std::shared_lock lock(mutex_);
  return size_;
}

boost::posix_time::ptime FileContent::lastModified() const {
  const std::shared_lock lock(mutex_);
  return lastModified_;
}

void FileContent::setLastModified(const boost::posix_time::ptime& time) {
  const std::scoped_lock lock(mutex_);
  lastModified_ = time;
}

std::size_t FileContent::read(std::uint64_t position, char* buffer, std::size_t count) const {
  const std::shared_lock lock(mutex_);
  if (position >= size_)
    return 0;
  const auto all = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - position));
  std::fill_n(buffer, all, '\0');
  const auto last = position + all;
  for (auto block = blocks_.lower_bound(position / blockSize); block != blocks_.end(); ++block) {
    const auto blockBegin = block->first * blockSize;
    if (blockBegin >= last)
      break;
    const auto from = std::max(position, blockBegin);
    const auto to = std::min(last, blockBegin + block->second.size());
    if (from < to)
      std::copy_n(block->second.data() + (from - blockBegin), to - from, buffer + (from - position));
  }
  return all;
}

FileContent::Written FileContent::write(std::optional<std::uint64_t> position, const char* bytes, std::size_t count) {
  const std::scoped_lock lock(mutex_);
  const auto begin = position.value_or(size_);
  const auto wanted = begin + std::min<std::uint64_t>(count, maximumSize - std::min(begin, maximumSize));
  if (wanted == begin)
    return {0, begin};
  const auto growth = wanted > size_ ? wanted - size_ : 0;
  const auto taken = space_->take(growth);
  const auto end = std::min(wanted, std::max(size_ + taken, begin));
  const bool fitsNone = end == begin && taken < growth;
  const auto newSize = fitsNone ? size_ : std::max(size_, end);
  space_->giveBack(size_ + taken - newSize);
  try {
    put(begin, bytes, static_cast<std::size_t>(end - begin));
  } catch (...) {
    dropFrom(size_);
    space_->giveBack(newSize - size_);
    throw;
  }
  if (end > begin)
    lastModified_ = now();
  size_ = newSize;
  return {static_cast<std::size_t>(end - begin), end};
}

void FileContent::put(std::uint64_t position, const char* bytes, std::size_t count) {
  while (count > 0) {
    const auto within = static_cast<std::size_t>(position % blockSize);
    const auto piece = std::min<std::size_t>(count, static_cast<std::size_t>(blockSize) - within);
    auto& block = blocks_[position / blockSize];
    if (block.size() < within + piece)
      block.resize(within + piece, '\0');
    std::copy_n(bytes, piece, block.data() + within);
    position += piece;
    bytes += piece;
    count -= piece;
  }
}

void FileContent::dropFrom(std::uint64_t size) {
  const auto within = static_cast<std::size_t>(size % blockSize);
  auto block = blocks_.lower_bound(size / blockSize);
  if (block != blocks_.end() && block->first == size / blockSize && within > 0) {
    block->second.resize(std::min(block->second.size(), within));
    ++block;
  }
  blocks_.erase(block, blocks_.end());
}

bool FileContent::resize(std::uint64_t size) {
  const std::scoped_lock lock(mutex_);
  if (size == size_)
    return true;
  if (size > size_) {
    const auto growth = size - size_;
    if (const auto taken = space_->take(growth); taken < growth) {
      space_->giveBack(taken);
      return false;
    }
  } else {
    dropFrom(size);
    space_->giveBack(size_ - size);
  }
  size_ = size;
  lastModified_ = now();
  return true;
}

std::optional<std::uint64_t> FileContent::appendFrom(const FileContent& source, std::uint64_t most) {
  const std::shared_lock sourceLock(source.mutex_);
  const std::scoped_lock lock(mutex_);
  const auto count = source.size_ > size_ ? std::min(most, source.size_ - size_) : 0;
  if (const auto taken = space_->take(count); taken < count) {
    space_->giveBack(taken);
    return std::nullopt;
  }
  try {
    putBlocks(source.blocks_, size_, size_ + count);
  } catch (...) {
    dropFrom(size_);
    space_->giveBack(count);
    throw;
  }
  size_ += count;
  lastModified_ = now();
  return count;
}

void FileContent::putBlocks(const Blocks& source, std::uint64_t first, std::uint64_t last) {
  for (auto block = source.lower_bound(first / blockSize); block != source.end(); ++block) {
    const auto blockBegin = block->first * blockSize;
    if (blockBegin >= last)
      return;
    const auto from = std::max(first, blockBegin);
    const auto to = std::min(last, blockBegin + block->second.size());
    if (from < to)
      put(from, block->second.data() + (from - blockBegin), static_cast<std::size_t>(to - from));
  }
}

}  // namespace foundation::storage::backend::memory::detail
