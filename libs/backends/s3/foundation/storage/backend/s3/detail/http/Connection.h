#pragma once

#include <foundation/storage/backend/s3/detail/http/Handles.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::s3::detail::http {

/// What libcurl needs to make one connection, and to keep it for the requests that follow. For one thread at a time.
/// Destroying it closes the connection.
class Connection {
 public:
  /// @param origin  what it is used for: scheme, host and port
  explicit Connection(std::string origin);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  const std::string& origin() const { return origin_; }
  CURL* easy() const { return easy_.get(); }
  CURLM* multi() const { return multi_.get(); }

  /// What libcurl is to call to open and close sockets. Several are open only while it tries which address answers.
  /// @{
  curl_socket_t openSocket(const curl_sockaddr& address);
  static int closeSocket(void* self, curl_socket_t descriptor) noexcept;
  /// @}

  /// Of what was written, the bytes that the other side's machine has not taken yet.
  std::int64_t bytesInQueue() const;
  /// Has what comes next acknowledged at once. Stores that write the header and the body of an answer one by one wait
  /// for that in between, which takes 40 ms where the kernel takes its time.
  void acknowledgeAtOnce() const;

 private:
  std::string origin_;
  std::vector<curl_socket_t> sockets_;  ///< open, in the order of opening
  MultiHandle multi_;                   ///< closes sockets when it dies
  EasyHandle easy_;                     ///< dies before the other
};

/// Scheme, host and port of a URL; a name and a password, which have no place there, are left out.
std::string originOf(std::string_view url);

}  // namespace foundation::storage::backend::s3::detail::http
