#pragma once

#include <atomic>

namespace foundation::storage::backend::s3::detail::client {

/// Bounds how much a client tries again, over all its requests, so that a store in trouble does not get a multiple of
/// the load that has brought it there. Each further attempt takes tokens out of a bucket, each request that succeeds
/// puts one back: in good times hardly a failure goes without its attempts, in bad times about one request in five is
/// sent once more. Any number of threads may use one.
class RetryBudget {
 public:
  static constexpr int capacity = 500;  ///< tokens, from the beginning

  /// In tokens.
  enum class Cost {
    Retry = 5,
    RetryAfterTimeout = 10  ///< more, as such a store has the most to do, and each attempt holds up for long
  };

  /// Whether there is enough for a further attempt; takes it then.
  bool take(Cost cost) noexcept;
  /// A request has succeeded, at whichever attempt.
  void succeed() noexcept;

 private:
  std::atomic<int> tokens_ = capacity;
};

}  // namespace foundation::storage::backend::s3::detail::client
