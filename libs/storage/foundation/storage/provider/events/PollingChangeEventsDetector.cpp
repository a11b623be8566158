#include <foundation/storage/provider/events/PollingChangeEventsDetector.h>

#include <foundation/storage/provider/detail/CaughtFailure.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::provider {
namespace {

/// Neither a spin nor a point in time that the clock cannot express.
std::chrono::milliseconds bounded(std::chrono::milliseconds period) {
  return std::clamp<std::chrono::milliseconds>(period, std::chrono::milliseconds(1), std::chrono::hours(24 * 36'500));
}

}  // namespace

PollingChangeEventsDetector::PollingChangeEventsDetector(ChangeCallback callback, std::chrono::milliseconds period)
    : callback_(std::move(callback)), period_(bounded(period)) {
  start();
}

PollingChangeEventsDetector::~PollingChangeEventsDetector() {
  if (!thread_.joinable())
    return;
  triggerShutdown();
  wakeUp_.notify_all();
  thread_.join();
}

void PollingChangeEventsDetector::addFolderLocation(StorageIRI folder, ListFolder listFolder,
                                                    FetchFileAttributes getFileAttributes,
                                                    FetchFolderAttributes getFolderAttributes,
                                                    std::vector<events::Kind> kinds, RecursiveChangePolling recursion) {
  const std::scoped_lock lock(mutex_);
  if (pollers_.contains(folder))
    return;
  auto poller =
      std::make_unique<SingleFolderChangePoller>(folder, callback_, std::move(listFolder), std::move(getFileAttributes),
                                                 std::move(getFolderAttributes), std::move(kinds), recursion);
  poller->buildInitialSnapshot();
  pollers_.emplace(std::move(folder), std::move(poller));
}

void PollingChangeEventsDetector::removeFolderAtLocation(StorageIRI folder) {
  const std::scoped_lock lock(mutex_);
  pollers_.erase(folder);
}

void PollingChangeEventsDetector::start() {
  thread_ = std::thread([this] { run(); });
}

void PollingChangeEventsDetector::run() {
  while (!isShutdown()) {
    awaitTimeout();
    if (!isShutdown())
      pollAll();
  }
}

void PollingChangeEventsDetector::awaitTimeout() {
  std::unique_lock lock(mutex_);
  wakeUp_.wait_for(lock, period_, [this] { return shutdown_; });
}

void PollingChangeEventsDetector::pollAll() {
  const std::scoped_lock lock(mutex_);
  for (const auto& [folder, poller] : pollers_) {
    try {
      poller->checkForChanges();
    } catch (...) {
      detail::logCaughtFailure("Error in checking for changes.");
    }
  }
}

bool PollingChangeEventsDetector::isShutdown() const {
  const std::scoped_lock lock(mutex_);
  return shutdown_;
}

void PollingChangeEventsDetector::triggerShutdown() {
  const std::scoped_lock lock(mutex_);
  shutdown_ = true;
}

}  // namespace foundation::storage::provider
