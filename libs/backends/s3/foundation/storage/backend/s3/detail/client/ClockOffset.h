#pragma once

#include <foundation/storage/backend/s3/detail/http/HttpClient.h>

#include <atomic>
#include <chrono>
#include <string_view>

namespace foundation::storage::backend::s3::detail::client {

/// The store's clock, as far as it is known: ours, until the store has refused a request for its time. Any number of
/// threads may use one.
class ClockOffset {
 public:
  std::chrono::system_clock::time_point now() const;

  /// Learns from the "date" of an answer, where that is a refusal that a wrong time would explain: one that says so, or
  /// a mere 403 (HEAD gets no reason) of a store whose clock is minutes away from the time of the signature.
  /// @param code      the store's own, empty where it gives none
  /// @param signedAt  what `now` was for the request
  /// @return whether the request is worth another attempt for that
  bool learn(const http::HttpAnswer& answer, std::string_view code, std::chrono::system_clock::time_point signedAt);

 private:
  std::atomic<std::chrono::seconds> offset_ = std::chrono::seconds(0);  ///< how much the store's is ahead
};

}  // namespace foundation::storage::backend::s3::detail::client
