#pragma once

#include <foundation/storage/backend/s3/detail/http/Connection.h>
#include <foundation/storage/backend/s3/detail/http/HttpClient.h>
#include <foundation/storage/backend/s3/detail/http/Reception.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>

namespace foundation::storage::backend::s3::detail::http {

/// One request on its way over a connection, and its answer. Settings and request outlive it.
class Transfer {
 public:
  Transfer(Connection& connection, const HttpSettings& settings, const HttpRequest& request);
  /// Leaves nothing of the request with the connection. Unless `run` has returned, that can only be destroyed.
  ~Transfer();
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  /// Once. Throws as `HttpClient::send` does.
  HttpAnswer run(Interrupt& interrupt);

 private:
  using Clock = std::chrono::steady_clock;

  void setCallbacks();

  void waitForEnd(Interrupt& interrupt);
  void requireMovement();
  std::int64_t moved() const;
  int patience(const Interrupt& interrupt) const;
  CURLcode result() const;
  void requireSuccess(CURLcode code) const;
  curl_socket_t openSocket(const curl_sockaddr& address);

  /// Nothing may be thrown through libcurl; it is kept for `run`.
  template <class Result, class Action>
  Result guard(Result failed, const Action& action) noexcept;
  // What libcurl calls; `self` is the transfer.
  static std::size_t onHeader(char* bytes, std::size_t one, std::size_t count, void* self) noexcept;
  static std::size_t onBody(char* bytes, std::size_t one, std::size_t count, void* self) noexcept;
  static int onRequest(void* self, char*, char*, int, int) noexcept;
  static curl_socket_t onOpenSocket(void* self, curlsocktype, curl_sockaddr* address) noexcept;

  Connection& connection_;
  const HttpSettings& settings_;
  const HttpRequest& request_;
  LinesHandle lines_;
  std::array<char, CURL_ERROR_SIZE> detail_{};
  Reception reception_;
  std::exception_ptr thrown_;    ///< by what libcurl has called
  bool hasBegun_ = false;        ///< the request may be on the wire
  std::int64_t moved_ = 0;       ///< bytes, up to `lastMoved_`
  Clock::time_point lastMoved_;  ///< looked at now and then
};

}  // namespace foundation::storage::backend::s3::detail::http
