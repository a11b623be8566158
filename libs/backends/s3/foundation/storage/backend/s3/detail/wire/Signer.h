#pragma once

#include <foundation/storage/backend/s3/detail/wire/Credentials.h>
#include <foundation/storage/backend/s3/detail/wire/Digest.h>
#include <foundation/storage/backend/s3/detail/wire/Request.h>

#include <chrono>
#include <mutex>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::wire {

/// Signs requests, AWS signature version 4 in headers (docs.aws.amazon.com, "Signature Version 4 for API requests").
/// Keeps the day's key, which takes four of the five HMACs. Any number of threads may use one.
class Signer {
 public:
  /// @param region   such as "us-east-1"
  explicit Signer(std::string region, std::string service = "s3");

  /// The headers to send: those of the request, and "host", "x-amz-date", "x-amz-content-sha256", where there is a
  /// session token "x-amz-security-token", and "authorization", which covers all of them. For nobody in particular only
  /// those of the request and "host".
  /// @param payloadHash  SHA-256 of the body, in hex
  /// @param now          as the store's clock has it
  Headers sign(const Request& request, const Credentials& credentials, std::string_view payloadHash,
               std::chrono::system_clock::time_point now) const;

 private:
  /// What signs everything of one day.
  struct DayKey {
    std::string secret;
    std::string day;
    Sha256 key;
  };
  Sha256 dayKey(const std::string& secret, const std::string& day) const;

  std::string region_;
  std::string service_;
  mutable std::mutex mutex_;
  mutable DayKey lastKey_;  ///< guarded by the mutex
};

}  // namespace foundation::storage::backend::s3::detail::wire
