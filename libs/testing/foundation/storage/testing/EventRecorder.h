#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/ChangeCallback.h>

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace foundation::storage::testing {

/// A change event as a callback gets it.
struct ChangeEvent {
  events::Kind kind;             ///< what happened
  provider::StorageIRI watched;  ///< the folder
  provider::StorageIRI subject;  ///< the entry concerned
  events::EntryType type;        ///< that entry's
};

/// Keeps the change events that arrive, and lets a test wait for them:
///
///     EventRecorder recorder;
///     item.startChangePollingMechanism(recorder.callback(), kinds, 1ms, recursion);
///     change(item);
///     EXPECT_TRUE(recorder.waitFor([&](const ChangeEvent& event) { return event.subject == changed; }));
///
/// Any number of threads may use it. Callbacks keep what they write to, so that they may outlive the recorder.
class FOUNDATION_EXPORT EventRecorder {
 public:
  /// In the order of their arrival.
  using Events = std::vector<ChangeEvent>;

  /// With no events.
  EventRecorder();

  /// What keeps the events that it is called with.
  provider::ChangeCallback callback() const;

  /// Waits until an event has arrived of which `isWanted` is true.
  /// @return false where none has come in a minute, which only a fault explains
  bool waitFor(const std::function<bool(const ChangeEvent&)>& isWanted) const;

  /// The events that have arrived since the last call.
  Events take() const;

 private:
  struct State {
    std::mutex mutex;  ///< guards the events
    std::condition_variable arrived;
    Events events;
  };
  std::shared_ptr<State> state_;
};

}  // namespace foundation::storage::testing
