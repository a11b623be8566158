#pragma once

#include <foundation/storage/provider/ErrorCode.h>
#include <foundation/storage/provider/ExceptionContext.h>

#include <stdexcept>
#include <string>

namespace foundation::storage::backend::s3::detail::client {

/// What the store, or the way to it, said of a failure; empty, or 0, where it said nothing.
struct FailureDetails {
  std::string operation = {};  ///< of the protocol, such as "PutObject"
  int status = 0;              ///< of HTTP
  std::string code = {};       ///< the store's own, such as "NoSuchKey"
  std::string message = {};    ///< the store's own
  std::string requestId = {};
  int attempts = 0;
  bool mayBeDone = false;  ///< an attempt may have done what was asked, though none has said so
};

/// A request that has failed for good. What is known of the location, whoever catches it adds.
class StoreFailure : public std::runtime_error {
 public:
  /// Texts are cut where they are long, and lose control characters: some are the store's, and end on a terminal.
  /// @param reason  what went wrong, and what to do about it, in UTF-8
  StoreFailure(provider::ErrorCode errorCode, const std::string& reason, FailureDetails details = {});

  provider::ErrorCode errorCode() const { return errorCode_; }
  const FailureDetails& details() const { return details_; }

  /// Its frame in the context of a failure, with the key "s3": `what()` and the store's message, the store's code (else
  /// the status), and operation, status, request id and number of attempts as further information.
  provider::ExceptionContext context() const;

 private:
  provider::ErrorCode errorCode_;
  FailureDetails details_;
};

}  // namespace foundation::storage::backend::s3::detail::client
