#pragma once

#include <fstore/StopSignal.h>

#include <foundation/storage/provider/ChangeCallback.h>

#include <mutex>
#include <vector>

namespace fstore {

/// A change event, kept until it is printed.
struct Event {
  foundation::storage::events::Kind kind;
  foundation::storage::provider::StorageIRI watched;
  foundation::storage::provider::StorageIRI subject;
  foundation::storage::events::EntryType type;
};

/// Hands events from the threads that watch to the one that prints, which sleeps until there are some or SIGINT or
/// SIGTERM asks it to stop; a second signal ends the program at once. There is one queue in a program.
/// Making it throws `std::system_error`.
class EventQueue {
 public:
  /// Adds events; must not be called any more once the queue is gone.
  foundation::storage::provider::ChangeCallback callback();

  /// Waits for events. Throws `std::system_error`.
  /// @return none where a signal asked to stop, and all that had come before was returned
  std::vector<Event> next();

 private:
  StopSignal stop_;
  std::mutex mutex_;  ///< guards the events
  std::vector<Event> events_;
};

}  // namespace fstore
