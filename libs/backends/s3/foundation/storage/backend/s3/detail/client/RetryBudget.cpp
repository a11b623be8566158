#include <foundation/storage/backend/s3/detail/client/RetryBudget.h>

namespace foundation::storage::backend::s3::detail::client {

bool RetryBudget::take(Cost cost) noexcept {
  const auto count = static_cast<int>(cost);
  auto tokens = tokens_.load();
  while (tokens >= count)
    if (tokens_.compare_exchange_weak(tokens, tokens - count))
      return true;
  return false;
}

void RetryBudget::succeed() noexcept {
  auto tokens = tokens_.load();
  while (tokens < capacity && !tokens_.compare_exchange_weak(tokens, tokens + 1)) {
  }
}

}  // namespace foundation::storage::backend::s3::detail::client
