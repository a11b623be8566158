#include <fstore/PlainCopies.h>

#include <chrono>
#include <utility>

namespace fstore {

using foundation::storage::provider::ErrorCode;
using foundation::storage::provider::StorageIRI;

namespace {

constexpr std::chrono::milliseconds patience(250);

}  // namespace

PlainCopies::PlainCopies(const StopSignal& stop, Report& report, std::function<void()> lastWords)
    : stop_(stop), report_(report), lastWords_(std::move(lastWords)), waiting_([this] { waitForSignal(); }) {}

PlainCopies::~PlainCopies() {
  {
    const std::scoped_lock lock(mutex_);
    isEnding_ = true;
  }
  isOver_.notify_all();
  stop_.wakeUp();
  waiting_.join();
}

void PlainCopies::waitForSignal() {
  const auto isEnding = [this] {
    const std::scoped_lock lock(mutex_);
    return isEnding_;
  };
  while (!stop_.isAsked() && !isEnding())
    stop_.wait();
  std::unique_lock lock(mutex_);
  // Not only until none is under way: one may just be about to begin.
  while (!isOver_.wait_for(lock, patience, [this] { return isEnding_; }))
    if (!underWay_.empty())
      endProgram();
}

void PlainCopies::endProgram() {
  for (const auto& destination : underWay_)
    report_.failure(destination.toString(), ErrorCode::IOError, u"Interrupted; what is there now may be incomplete");
  lastWords_();
  stop_.endProgram();
}

PlainCopies::Entry::Entry(PlainCopies& copies, const StorageIRI& destination) : copies_(copies) {
  const std::scoped_lock lock(copies_.mutex_);
  place_ = copies_.underWay_.insert(copies_.underWay_.end(), destination);
}

PlainCopies::Entry::~Entry() {
  const std::scoped_lock lock(copies_.mutex_);
  copies_.underWay_.erase(place_);
}

}  // namespace fstore
