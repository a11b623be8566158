#include <fstore/EventQueue.h>

#include <boost/property_tree/ptree.hpp>

#include <utility>

namespace fstore {

foundation::storage::provider::ChangeCallback EventQueue::callback() {
  return [this](const auto& kind, const auto& watched, const auto& subject, const auto& type, const auto&) {
    {
      const std::scoped_lock lock(mutex_);
      events_.push_back({kind, watched, subject, type});
    }
    stop_.wakeUp();
  };
}

std::vector<Event> EventQueue::next() {
  for (;;) {
    {
      const std::scoped_lock lock(mutex_);
      if (!events_.empty() || stop_.isAsked())
        return std::exchange(events_, {});
    }
    stop_.wait();
  }
}

}  // namespace fstore
