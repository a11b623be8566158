#pragma once

#include <foundation/storage/backend/s3/detail/client/StoreFailure.h>
#include <foundation/storage/backend/s3/detail/http/HttpClient.h>

#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::client {

/// What an answer that is a failure says.
struct Refusal {
  int status = 0;
  std::string code = {};  ///< the store's own; that of a failure within a 200 as well
  std::string message = {};
  std::string requestId = {};
  std::string region = {};  ///< where the bucket lives, if the store says so
  bool isOfNobody = false;  ///< the request was not signed, as there are no credentials
};
Refusal refusalOf(const http::HttpAnswer& answer);

/// Whether the store has a code for it that says why it will be refused again.
bool isExplained(const Refusal& refusal);

/// The failure that a refusal is, with a sentence about what to do.
/// @param attempts  how many there were
StoreFailure failureOf(const Refusal& refusal, std::string_view operation, int attempts);

/// Likewise of a request without an answer.
StoreFailure failureOf(const http::TransportFailure& failure, std::string_view operation, int attempts);

}  // namespace foundation::storage::backend::s3::detail::client
