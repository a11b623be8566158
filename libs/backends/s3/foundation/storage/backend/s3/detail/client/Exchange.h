#pragma once

#include <foundation/storage/backend/s3/detail/client/ClockOffset.h>
#include <foundation/storage/backend/s3/detail/client/Endpoint.h>
#include <foundation/storage/backend/s3/detail/client/Errors.h>
#include <foundation/storage/backend/s3/detail/client/Learnt.h>
#include <foundation/storage/backend/s3/detail/client/RetryBudget.h>
#include <foundation/storage/backend/s3/detail/client/Settings.h>
#include <foundation/storage/backend/s3/detail/http/HttpClient.h>
#include <foundation/storage/backend/s3/detail/wire/Signer.h>

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::s3::detail::client {

/// In bytes; a page of a listing has 4 MiB where all keys are as long as can be. Read, it takes up to 16 times as much.
constexpr std::uint64_t longestDocument = std::uint64_t{16} << 20;

/// A request as an operation makes it.
struct Call {
  std::string_view operation;  ///< of the protocol, such as "PutObject"
  std::string method;
  std::string bucket;
  std::string key = {};  ///< empty: for the bucket itself
  std::vector<wire::Parameter> query = {};
  wire::Headers headers = {};
  std::string_view body = {};                     ///< the caller keeps it alive
  std::vector<int> alsoTaken = {};                ///< statuses that are no failures beside 200 to 299
  std::uint64_t longestAnswer = longestDocument;  ///< in bytes, of its body
  /// Looks whether an answer below 300 is what it has to be: throws `BadAnswer`, or `MalformedDocument`, where not.
  /// That may be a failure then, which hides in a success.
  std::function<void(const http::HttpAnswer&)> check = {};
};

/// An answer that came whole, and yet is damaged, or makes no sense. Worth another attempt.
class BadAnswer : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What became of a call.
struct Reply {
  http::HttpAnswer answer;
  int attempts = 0;
  /// Whether an attempt before the one that was answered may have done what was asked.
  bool mayBeDone = false;
  std::chrono::steady_clock::time_point begun = {};  ///< when the first attempt was
};

/// Sends requests to a store: signed anew for each attempt, again where that may help, within the time that is set. Any
/// number of threads may use one.
class Exchange {
 public:
  explicit Exchange(const Settings& settings);

  const Settings& settings() const { return settings_; }
  Learnt& learnt() { return learnt_; }

  /// Throws `StoreFailure` once nothing more is to be tried, and `http::Interrupted`.
  Reply send(const Call& call, http::Interrupt& interrupt);

 private:
  class Attempts;

  const Settings settings_;
  const Endpoint endpoint_;
  const wire::Signer signer_;
  RetryBudget budget_;
  ClockOffset clock_;
  Learnt learnt_;
  http::HttpClient http_;
};

}  // namespace foundation::storage::backend::s3::detail::client
