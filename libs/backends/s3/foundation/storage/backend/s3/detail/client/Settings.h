#pragma once

#include <foundation/storage/backend/s3/detail/http/HttpClient.h>
#include <foundation/storage/backend/s3/detail/wire/Credentials.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

/// What the store offers, one operation a function.
namespace foundation::storage::backend::s3::detail::client {

/// Where a bucket's name goes in a URL.
enum class Addressing {
  Path,        ///< https://HOST/BUCKET/KEY
  VirtualHost  ///< https://BUCKET.HOST/KEY
};

/// How a store is reached, and what is asked of it.
struct Settings {
  std::string endpoint = "https://s3.amazonaws.com";  ///< "http://" or "https://", host, and perhaps a port
  std::string region = "us-east-1";
  Addressing addressing = Addressing::VirtualHost;
  /// Called before each attempt, by any thread, so that keys that expire can be renewed.
  std::function<wire::Credentials()> credentials = [] { return wire::Credentials(); };
  http::HttpSettings http = {};
  int attempts = 5;                                     ///< at each request, at least 1
  std::chrono::milliseconds operationTimeout{120'000};  ///< for a request with all its attempts and pauses
  std::uint64_t partSize = 8 * 1024 * 1024;             ///< in bytes; what is longer is sent and read in parts
  unsigned parallelParts = 4;                           ///< of one stream or copy, at least 1
};

}  // namespace foundation::storage::backend::s3::detail::client
