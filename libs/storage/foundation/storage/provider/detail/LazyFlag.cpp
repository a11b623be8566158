#include <foundation/storage/provider/detail/LazyFlag.h>

#include <utility>

namespace foundation::storage::provider::detail {

void LazyFlag::set(bool value) noexcept {
  find_ = nullptr;
  state_.store(value ? State::Yes : State::No, std::memory_order_release);
}

void LazyFlag::set(std::function<bool()> find) noexcept {
  find_ = std::move(find);
  state_.store(State::Unknown, std::memory_order_release);
}

bool LazyFlag::find() const {
  for (;;) {
    auto state = State::Unknown;
    if (state_.compare_exchange_strong(state, State::Asking, std::memory_order_acquire))
      break;
    if (state != State::Asking)
      return state == State::Yes;
    state_.wait(State::Asking, std::memory_order_acquire);
  }
  try {
    const bool value = find_();
    leave(value ? State::Yes : State::No);
    return value;
  } catch (...) {
    leave(State::Unknown);
    throw;
  }
}

void LazyFlag::leave(State state) const noexcept {
  state_.store(state, std::memory_order_release);
  state_.notify_all();
}

}  // namespace foundation::storage::provider::detail
