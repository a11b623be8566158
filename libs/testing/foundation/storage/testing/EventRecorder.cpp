#include <foundation/storage/testing/EventRecorder.h>

#include <boost/property_tree/ptree.hpp>

#include <algorithm>
#include <chrono>
#include <utility>

namespace foundation::storage::testing {

EventRecorder::EventRecorder() : state_(std::make_shared<State>()) {}

provider::ChangeCallback EventRecorder::callback() const {
  return [state = state_](const events::Kind& kind, const provider::StorageIRI& watched,
                          const provider::StorageIRI& subject, const events::EntryType& type,
                          const boost::property_tree::ptree&) {
    const std::scoped_lock lock(state->mutex);
    state->events.push_back({kind, watched, subject, type});
    state->arrived.notify_all();
  };
}

bool EventRecorder::waitFor(const std::function<bool(const ChangeEvent&)>& isWanted) const {
  std::unique_lock lock(state_->mutex);
  return state_->arrived.wait_for(lock, std::chrono::minutes(1),
                                  [&] { return std::any_of(state_->events.begin(), state_->events.end(), isWanted); });
}

EventRecorder::Events EventRecorder::take() const {
  const std::scoped_lock lock(state_->mutex);
  return std::exchange(state_->events, {});
}

}  // namespace foundation::storage::testing
