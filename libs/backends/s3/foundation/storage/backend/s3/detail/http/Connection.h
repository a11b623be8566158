#pragma once

#include <foundation/storage/backend/s3/detail/http/Handles.h>

#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::http {

/// What libcurl needs to make one connection, and to keep it for the requests that follow. For one thread at a time.
/// Destroying it closes the connection.
class Connection {
 public:
  /// @param origin  what it is used for: scheme, host and port
  explicit Connection(std::string_view origin);

  const std::string& origin() const { return origin_; }
  CURL* easy() const { return easy_.get(); }
  CURLM* multi() const { return multi_.get(); }

 private:
  std::string origin_;
  MultiHandle multi_;
  EasyHandle easy_;  ///< dies before the other
};

/// Scheme, host and port of a URL.
std::string_view originOf(std::string_view url);

}  // namespace foundation::storage::backend::s3::detail::http
