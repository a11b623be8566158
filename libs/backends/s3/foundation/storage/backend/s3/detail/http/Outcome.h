#pragma once

#include <foundation/storage/backend/s3/detail/http/HttpClient.h>

#include <curl/curl.h>

#include <string>

namespace foundation::storage::backend::s3::detail::http {

/// How a transfer has ended.
struct Outcome {
  CURLcode code;
  std::string origin;  ///< scheme, host and port
  std::string detail;  ///< libcurl's own words
  bool hasBegun;       ///< whether some of the request may have been sent
};

/// What to throw for one that is not CURLE_OK.
TransportFailure failureOf(const Outcome& outcome);

}  // namespace foundation::storage::backend::s3::detail::http
