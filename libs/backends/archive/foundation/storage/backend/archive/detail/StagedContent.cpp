#include <foundation/storage/backend/archive/detail/StagedContent.h>

#include <foundation/storage/backend/archive/detail/Fault.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

namespace foundation::storage::backend::archive::detail {

namespace {

/// How much all contents have in memory, in bytes.
std::atomic<std::uint64_t> inMemory = 0;

}  // namespace

boost::posix_time::ptime now() { return boost::posix_time::microsec_clock::universal_time(); }

StagedContent::~StagedContent() { inMemory.fetch_sub(memory_.size(), std::memory_order_relaxed); }

std::uint64_t StagedContent::size() const {
  const std::shared_lock lock(mutex_);
  return size_;
}

boost::posix_time::ptime StagedContent::lastModified() const {
  const std::shared_lock lock(mutex_);
  return lastModified_;
}

void StagedContent::setLastModified(const boost::posix_time::ptime& time) {
  const std::scoped_lock lock(mutex_);
  lastModified_ = time;
  ++revision_;
}

std::size_t StagedContent::read(std::uint64_t position, char* buffer, std::size_t count) const {
  return Snapshot(*this).read(position, buffer, count);
}

std::size_t StagedContent::readLocked(std::uint64_t position, char* buffer, std::size_t count) const {
  if (position >= size_)
    return 0;
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - position));
  if (!file_)
    return memory_.copy(buffer, wanted, position);
  file_->read(position, buffer, wanted);
  return wanted;
}

std::uint64_t StagedContent::write(std::optional<std::uint64_t> position, const char* bytes, std::size_t count) {
  const std::scoped_lock lock(mutex_);
  const auto begin = position.value_or(size_);
  if (begin > maximumSize || count > maximumSize - begin)
    throw Fault(provider::ErrorCode::FileTooLarge, "no file can be that long");
  const auto end = begin + count;
  reserve(std::max(end, size_));
  if (file_)
    writeToFile(begin, bytes, count);
  else
    memory_.replace(begin, count, bytes, count);
  size_ = std::max(size_, end);
  noteChange();
  return end;
}

/// Leaves nothing beyond the end where it fails: a gap that is made there later has to read as zeros.
void StagedContent::writeToFile(std::uint64_t position, const char* bytes, std::size_t count) {
  try {
    file_->write(position, bytes, count);
  } catch (...) {
    file_->cut(size_);
    throw;
  }
}

/// Makes room for that many bytes, in zeros.
void StagedContent::reserve(std::uint64_t size) {
  if (file_ || size <= memory_.size())
    return;
  const auto more = size - memory_.size();
  if (size > mostInMemory || inMemory.load(std::memory_order_relaxed) + more > mostInMemoryOfAll)
    spill();
  else
    resizeMemory(static_cast<std::size_t>(size));
}

void StagedContent::spill() {
  file_.emplace();
  try {
    file_->write(0, memory_.data(), memory_.size());
  } catch (...) {
    file_.reset();
    throw;
  }
  resizeMemory(0);
  memory_.shrink_to_fit();
}

void StagedContent::resizeMemory(std::size_t size) {
  const auto before = memory_.size();
  memory_.resize(size);
  inMemory.fetch_add(size - before, std::memory_order_relaxed);  // modulo 2^64, where it shrinks
}

void StagedContent::resize(std::uint64_t size) {
  const std::scoped_lock lock(mutex_);
  if (size > maximumSize)
    throw Fault(provider::ErrorCode::FileTooLarge, "no file can be that long");
  reserve(size);
  if (!file_)
    resizeMemory(static_cast<std::size_t>(size));
  else if (size < size_)
    file_->cut(size);
  size_ = size;
  noteChange();
}

void StagedContent::noteChange() {
  lastModified_ = now();
  ++revision_;
}

std::uint64_t StagedContent::revision() const {
  const std::shared_lock lock(mutex_);
  return revision_;
}

StagedContent::Writing::Writing(std::shared_ptr<StagedContent> content) : content_(std::move(content)) {
  const std::scoped_lock lock(content_->mutex_);
  ++content_->writers_;
}

StagedContent::Writing::~Writing() {
  const std::scoped_lock lock(content_->mutex_);
  --content_->writers_;
}

bool StagedContent::isBeingWritten() const {
  const std::shared_lock lock(mutex_);
  return writers_ > 0;
}

}  // namespace foundation::storage::backend::archive::detail
