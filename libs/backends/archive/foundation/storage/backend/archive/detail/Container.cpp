#include <foundation/storage/backend/archive/detail/Container.h>

#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/FileAttributes.h>

#include <algorithm>
#include <ios>
#include <limits>
#include <utility>

namespace foundation::storage::backend::archive::detail {

std::optional<Container::Stamp> Container::stamp() const {
  if (!item_.fileExists())
    return std::nullopt;
  const auto attributes = item_.getFileAttributes();
  return Stamp{attributes.hasSizeAttribute() ? attributes.getSize() : std::numeric_limits<std::uint64_t>::max(),
               attributes.getLastModified()};
}

Input Container::open() {
  {
    const std::scoped_lock lock(mutex_);
    if (isRetired_)
      throw Fault(provider::ErrorCode::ResourceInUse, "the archive was replaced while it was read");
    if (!idle_.empty()) {
      auto idle = std::move(idle_.back());
      idle_.pop_back();
      return {shared_from_this(), std::move(idle)};
    }
  }
  return {shared_from_this(), {item_.openReadOnlyStream(), 0}};
}

void Container::retire() {
  std::vector<Idle> dropped;  // closed without the lock
  const std::scoped_lock lock(mutex_);
  isRetired_ = true;
  dropped.swap(idle_);
}

void Container::giveBack(Idle idle) noexcept {
  Idle dropped{};  // closed without the lock
  const std::scoped_lock lock(mutex_);
  if (isRetired_) {
    dropped = std::move(idle);
    return;
  }
  try {
    idle_.push_back(std::move(idle));
  } catch (const std::bad_alloc&) {
    return;  // then the next one opens a stream of its own
  }
  if (idle_.size() > mostIdle) {
    dropped = std::move(idle_.front());
    idle_.erase(idle_.begin());
  }
}

Input::Input(std::shared_ptr<Container> container, Container::Idle opened)
    : container_(std::move(container)), stream_(std::move(opened.stream)), position_(opened.position) {}

Input::~Input() {
  if (stream_ && isUsable_)
    container_->giveBack({std::move(stream_), position_});
}

std::uint64_t Input::size() {
  if (!size_) {
    isUsable_ = false;
    size_ = static_cast<std::uint64_t>(std::streamoff(stream_->seek(0, std::ios_base::end)));
    position_ = *size_;
    isUsable_ = true;
  }
  return *size_;
}

std::size_t Input::readSome(std::uint64_t position, char* buffer, std::size_t count) {
  constexpr auto farthest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (position > farthest)
    throw damage("it names a place beyond the end of any file");
  isUsable_ = false;
  if (position != position_) {
    stream_->seek(static_cast<std::int64_t>(position), std::ios_base::beg);
    position_ = position;
  }
  const auto got = std::max<std::int64_t>(0, stream_->read(buffer, static_cast<std::int64_t>(count)));
  position_ += static_cast<std::uint64_t>(got);
  isUsable_ = true;
  return static_cast<std::size_t>(got);
}

void Input::readAll(std::uint64_t position, char* buffer, std::size_t count) {
  while (count > 0) {
    const auto got = readSome(position, buffer, count);
    if (got == 0)
      throw damage("the archive ends too early");
    position += got;
    buffer += got;
    count -= got;
  }
}

}  // namespace foundation::storage::backend::archive::detail
