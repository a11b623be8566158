#pragma once

#include <foundation/storage/backend/s3/detail/http/Interrupt.h>
#include <foundation/storage/backend/s3/detail/wire/Request.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::http {

/// How connections are made.
struct HttpSettings {
  std::string caFile = {};                           ///< certificates to trust in place of the system's; empty: those
  std::chrono::milliseconds connectTimeout{10'000};  ///< for name, connection and TLS
  std::chrono::milliseconds idleTimeout{30'000};     ///< for as long as no byte moves either way
};

/// What is sent.
struct HttpRequest {
  std::string method;
  std::string url;             ///< sent as it is, dot segments included
  wire::Headers headers = {};  ///< all that are sent, but for "content-length"
  std::string_view body = {};  ///< the caller keeps it alive
  std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max();
  std::uint64_t longestAnswer =
      std::uint64_t{256} * 1024 * 1024;  ///< in bytes, of its body; one that is longer is given up
};

/// What came back, whatever the status; redirections are not followed.
struct HttpAnswer {
  int status = 0;
  wire::Headers headers;  ///< in the order of the answer, names in lower case
  std::string body;       ///< whole: as long as "content-length" says
};

/// A request without a whole answer.
class TransportFailure : public std::runtime_error {
 public:
  enum class Kind {
    Unresolved,    ///< the host's name has no address
    Unreachable,   ///< no connection came about
    Untrusted,     ///< the certificate fails, or cannot be checked
    TimedOut,      ///< nothing moved for too long
    Broken,        ///< the connection ended too early, or the answer is no HTTP
    Misconfigured  ///< trying again cannot help: a CA file that cannot be read, a URL that is none
  };
  /// @param mayHaveArrived  whether the store may have acted on the request
  TransportFailure(Kind kind, bool mayHaveArrived, const std::string& message);

  Kind kind() const { return kind_; }
  bool mayHaveArrived() const { return mayHaveArrived_; }

 private:
  Kind kind_;
  bool mayHaveArrived_;
};

/// Sends requests, each on the calling thread, and keeps connections for those that follow, whatever thread sends them.
/// Any number of threads may use one. The library that it is made of needs no initialisation by the program.
class HttpClient {
 public:
  explicit HttpClient(HttpSettings settings);
  ~HttpClient();
  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;

  /// Sends once, and waits for the answer. Throws `TransportFailure`, and `Interrupted` at once when the interrupt is
  /// raised; the connection is given up then.
  HttpAnswer send(const HttpRequest& request, Interrupt& interrupt);

 private:
  class Pool;
  HttpSettings settings_;
  std::unique_ptr<Pool> pool_;
};

}  // namespace foundation::storage::backend::s3::detail::http
