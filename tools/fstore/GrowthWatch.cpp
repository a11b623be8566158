#include <fstore/GrowthWatch.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <system_error>

namespace fstore {
namespace {

constexpr std::chrono::milliseconds period(100);

}  // namespace

GrowthWatch::GrowthWatch(Progress& progress, const foundation::storage::provider::StorageItem& place,
                         std::uint64_t size)
    : progress_(progress), place_(place), size_(size), sizeBefore_(sizeNow()) {
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    // Without a thread the progress is only told in the end.
  }
}

GrowthWatch::~GrowthWatch() { end(); }

std::uint64_t GrowthWatch::end() {
  {
    const std::scoped_lock lock(mutex_);
    isEnding_ = true;
  }
  isOver_.notify_all();
  if (thread_.joinable())
    thread_.join();
  return told_;
}

void GrowthWatch::run() {
  std::unique_lock lock(mutex_);
  while (!isOver_.wait_for(lock, period, [this] { return isEnding_; })) {
    const auto now = sizeNow();
    if (!now || now == sizeBefore_)
      continue;
    const auto done = std::min(*now, size_);
    if (done > told_)
      progress_.add(done - told_);
    told_ = std::max(told_, done);
  }
}

std::optional<std::uint64_t> GrowthWatch::sizeNow() const noexcept {
  try {
    return place_.getFileAttributes().getSize();
  } catch (const std::exception&) {
    return std::nullopt;  // it is not there yet, or the copy itself will say what is wrong
  }
}

}  // namespace fstore
