#pragma once

#include <foundation/storage/backend/s3/detail/client/RetryBudget.h>
#include <foundation/storage/backend/s3/detail/http/HttpClient.h>

#include <chrono>
#include <optional>
#include <string_view>

namespace foundation::storage::backend::s3::detail::client {

/// Whether trying again may help.
enum class Outlook {
  Final,      ///< it will be refused again
  Passing,    ///< the store has not acted on it, and may take it the next time
  Uncertain,  ///< the same, but the store may have acted on it
  Skewed      ///< our clock is wrong; helps once, with a better one
};

/// An attempt that was in vain.
struct Setback {
  Outlook outlook = Outlook::Uncertain;
  bool hasTimedOut = false;
  std::chrono::milliseconds wish{0};  ///< how long the store asks to be left alone
};

/// @param code  the store's own, also that of a failure within a 200; empty where it gives none
Setback setbackOf(const http::HttpAnswer& answer, std::string_view code);
Setback setbackOf(const http::TransportFailure& failure);

/// The attempts of one request.
class RetryPolicy {
 public:
  /// @param attempts  at most, at least 1
  RetryPolicy(int attempts, RetryBudget& budget) : attempts_(attempts), budget_(budget) {}

  /// How long to wait before the next attempt; nothing: there is none, since it would not help, there have been enough
  /// of them, or the budget is used up. The pause is random, up to a bound that doubles from attempt to attempt, so
  /// that clients whose requests have failed together do not come again together; what the store wishes is added.
  std::optional<std::chrono::milliseconds> pauseAfter(const Setback& setback);

 private:
  int attempts_;
  RetryBudget& budget_;
  int done_ = 0;
  bool isSkewKnown_ = false;
};

}  // namespace foundation::storage::backend::s3::detail::client
