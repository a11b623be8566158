#pragma once

#include <foundation/storage/provider/ChangeCallback.h>

#include <memory>
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

/// Hands events from the threads that watch to the one that prints, which sleeps until there are some or a
/// signal asks it to stop (signalfd(2), eventfd(2)).
class EventQueue {
 public:
  /// Blocks SIGINT and SIGTERM in the calling thread. Throws `std::system_error`.
  EventQueue();
  ~EventQueue();
  EventQueue(const EventQueue&) = delete;
  EventQueue& operator=(const EventQueue&) = delete;

  /// Adds events; must not be called any more once the queue is gone.
  foundation::storage::provider::ChangeCallback callback();

  /// Waits for events. Throws `std::system_error`.
  /// @return none where a signal asked to stop
  std::vector<Event> next();

 private:
  bool waitForEvents() const;

  int signals_;
  int wakeUp_;
  std::mutex mutex_;  ///< guards the events
  std::vector<Event> events_;
};

}  // namespace fstore
