#include <foundation/storage/backend/s3/detail/http/Interrupt.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::s3::detail::http {

namespace {

constexpr std::chrono::milliseconds betweenQuestions{50};

}  // namespace

Interrupt::Interrupt(std::function<bool()> question) : question_(std::move(question)) {}

void Interrupt::raise() noexcept {
  const std::lock_guard lock(mutex_);
  if (std::exchange(isRaised_, true))
    return;
  changed_.notify_all();
  for (const auto& [id, action] : listeners_)
    action();
}

bool Interrupt::isRaised() {
  const auto isKnown = [this] {
    const std::lock_guard lock(mutex_);
    return isRaised_;
  };
  if (isKnown())
    return true;
  if (!question_)
    return false;
  // Where another thread asks already, its answer is for all. It may take its time, and is not waited for.
  const std::unique_lock asking(questionMutex_, std::try_to_lock);
  if (asking && !isKnown() && question_())
    raise();
  return isKnown();
}

bool Interrupt::waitFor(std::chrono::milliseconds time) {
  constexpr std::chrono::hours longest{24 * 365};  // what is longer could not be added to a time
  const auto end = std::chrono::steady_clock::now() + std::min<std::chrono::milliseconds>(time, longest);
  while (!isRaised()) {
    const auto now = std::chrono::steady_clock::now();
    if (now >= end)
      return false;
    const auto until = question_ ? std::min(end, now + betweenQuestions) : end;
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, until, [this] { return isRaised_; });
  }
  return true;
}

Interrupt::Listener::Listener(Interrupt& interrupt, std::function<void()> action) : interrupt_(interrupt) {
  const std::lock_guard lock(interrupt_.mutex_);
  id_ = interrupt_.nextId_++;
  if (interrupt_.isRaised_)
    action();
  interrupt_.listeners_.emplace(id_, std::move(action));
}

Interrupt::Listener::~Listener() {
  const std::lock_guard lock(interrupt_.mutex_);
  interrupt_.listeners_.erase(id_);
}

}  // namespace foundation::storage::backend::s3::detail::http
