// Polling for changes, for every provider: the detector looks through the provider's own operations.

#include <foundation/storage/provider/IProvider.h>

#include <foundation/storage/provider/events/PollingChangeEventsDetector.h>

#include <utility>

namespace foundation::storage::provider {

void IProvider::doStartChangePollingMechanism(const StorageIRI& location, const ChangeCallback& callback,
                                              const std::vector<events::Kind>& kinds, std::chrono::milliseconds period,
                                              RecursiveChangePolling recursion) const {
  const std::scoped_lock lock(pollingMutex_);
  if (!detector_)
    detector_ = std::make_unique<PollingChangeEventsDetector>(callback, period);
  const auto list = [this, recursion](const StorageIRI& folder) {
    return recursion == RecursiveChangePolling::DirectOnly ? listAll(folder, {}) : listAllRecursive(folder, {});
  };
  detector_->addFolderLocation(
      location, list, [this](const StorageIRI& file) { return doGetFileAttributes(file); },
      [this](const StorageIRI& folder) { return doGetFolderAttributes(folder); }, kinds, recursion);
}

void IProvider::doStopChangePollingMechanism(const StorageIRI& location) const {
  const std::scoped_lock lock(pollingMutex_);
  if (detector_)
    detector_->removeFolderAtLocation(location);
}

void IProvider::endChangePolling() noexcept {
  std::unique_ptr<PollingChangeEventsDetector> ended;
  const std::scoped_lock lock(pollingMutex_);
  ended = std::move(detector_);
}

}  // namespace foundation::storage::provider
