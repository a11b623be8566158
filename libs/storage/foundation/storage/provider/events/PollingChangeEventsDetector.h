#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/ChangeCallback.h>
#include <foundation/storage/provider/StorageIRI.h>
#include <foundation/storage/provider/events/SingleFolderChangePoller.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace foundation::storage::provider {

/// Watches any number of folders by looking at all of them every period, on a thread of its own; all events go
/// to one callback.
///
/// The callback runs on that thread while the detector is locked: it must not add or remove folders, nor
/// destroy the detector. All operations may be called by any other threads.
class FOUNDATION_EXPORT PollingChangeEventsDetector {
 public:
  /// The first pass comes one period after this, each further one a period after the end of the one before.
  /// Throws `std::system_error` where no thread can be started.
  /// @param period  a millisecond at least; a shorter one counts as that
  PollingChangeEventsDetector(ChangeCallback callback, std::chrono::milliseconds period);
  /// Lets a pass under way end, and none begin.
  ~PollingChangeEventsDetector();
  PollingChangeEventsDetector(const PollingChangeEventsDetector&) = delete;
  PollingChangeEventsDetector& operator=(const PollingChangeEventsDetector&) = delete;

  /// Remembers what is in the folder, and watches it from now on. One that is watched already stays watched as
  /// it is. Throws what the functions throw; the folder is not watched then. Waits for a pass under way.
  void addFolderLocation(StorageIRI folder, ListFolder listFolder, FetchFileAttributes getFileAttributes,
                         FetchFolderAttributes getFolderAttributes, std::vector<events::Kind> kinds,
                         RecursiveChangePolling recursion);

  /// Ends the watching: waits for a pass under way, and nothing is published for the folder after that. A folder
  /// that is not watched is none to remove.
  void removeFolderAtLocation(StorageIRI folder);

 private:
  void start();
  void run();
  void awaitTimeout();
  void pollAll();
  bool isShutdown() const;
  void triggerShutdown();

  const ChangeCallback callback_;
  const std::chrono::milliseconds period_;
  std::map<StorageIRI, std::unique_ptr<SingleFolderChangePoller>> pollers_;
  mutable std::mutex mutex_;  ///< guards the pollers and the flag; taken before a poller's
  std::thread thread_;
  bool shutdown_ = false;
  std::condition_variable wakeUp_;
};

}  // namespace foundation::storage::provider
