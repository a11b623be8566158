#pragma once

#include "support/http/ThrowawayCertificate.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// Servers that tests talk to, in the test's own process.
namespace foundation::storage::testing::http {

/// What a client has sent.
struct ReceivedRequest {
  std::string method;
  std::string target;                          ///< path and query as they were sent, not decoded
  std::map<std::string, std::string> headers;  ///< names in lower case
  std::string body;
  std::size_t connection = 0;  ///< which one it came on, counted from 1

  /// Empty where there is none.
  std::string header(const std::string& name) const;
};

/// What a client is to get, and what becomes of it on the way. Whole, and the connection stays open, unless one of the
/// functions says otherwise; they are meant to be chained: `return ScriptedAnswer{.body = "abc"}.cutOffAfter(2);`
struct ScriptedAnswer {
  enum class Ending { KeepOpen, Close, Reset, Stall };
  using Gate = std::shared_future<void>;

  int status = 200;
  /// "content-length" is added, unless it or "transfer-encoding" is there. The body goes out as it is.
  std::vector<std::pair<std::string, std::string>> headers = {};
  std::string body = {};

  Ending ending = Ending::KeepOpen;
  /// Bytes of the body that go out before the ending; nothing: not even the head does.
  std::optional<std::size_t> sentBytes = std::string::npos;
  Gate gate = {};

  ScriptedAnswer closing() const { return endingSo(Ending::Close, std::string::npos); }
  ScriptedAnswer cutOffAfter(std::size_t bytes) const { return endingSo(Ending::Close, bytes); }
  ScriptedAnswer resetAtOnce() const { return endingSo(Ending::Reset, std::nullopt); }
  ScriptedAnswer resetAfter(std::size_t bytes) const { return endingSo(Ending::Reset, bytes); }
  /// Waits for the gate, or for `ScriptedServer::release()`, and then goes on.
  /// @{
  ScriptedAnswer stalledAtOnce(Gate until = {}) const {
    return endingSo(Ending::Stall, std::nullopt, std::move(until));
  }
  ScriptedAnswer stalledAfter(std::size_t bytes, Gate until = {}) const {
    return endingSo(Ending::Stall, bytes, std::move(until));
  }
  /// @}
  /// Flips a bit of that byte of the body; checksums in headers stay.
  ScriptedAnswer flippedAt(std::size_t position) const;

 private:
  ScriptedAnswer endingSo(Ending how, std::optional<std::size_t> bytes, Gate until = {}) const;
};

/// An HTTP/1.1 server on a port of its own on 127.0.0.1, with a thread a connection:
///
///     ScriptedServer server([](const ReceivedRequest&) { return ScriptedAnswer{.status = 503}; });
///     ... // send something to server.url() + "/some/path"
///     EXPECT_EQ(server.requests().size(), 5u);
///
/// It takes bodies with a "content-length" only, and answers "expect: 100-continue".
class ScriptedServer {
 public:
  /// Called by several threads at once. What it throws becomes a 500 with the reason as its body.
  using Handler = std::function<ScriptedAnswer(const ReceivedRequest&)>;

  /// @param certificate  for TLS, and outlives the server; null for none
  explicit ScriptedServer(Handler handler, const ThrowawayCertificate* certificate = nullptr);
  /// Ends all connections, stalled ones as well.
  ~ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  /// Such as "http://127.0.0.1:34567".
  const std::string& url() const { return url_; }
  /// All so far, also those that are not answered yet.
  std::vector<ReceivedRequest> requests() const;
  /// Waits until there have been so many.
  void awaitRequests(std::size_t count) const;
  /// How many were accepted so far.
  std::size_t connections() const;
  /// From now on, nothing stalls.
  void release();

 private:
  class Socket;

  void acceptConnections();
  void serve(std::shared_ptr<Socket> socket, std::size_t number);
  bool serveOne(Socket& socket, ReceivedRequest request);
  bool send(Socket& socket, const ScriptedAnswer& answer, bool hasBody);
  bool waitForRelease(const ScriptedAnswer::Gate& gate);

  Handler handler_;
  const ThrowawayCertificate* certificate_;
  std::unique_ptr<Socket> listener_;
  std::string url_;

  mutable std::mutex mutex_;  ///< guards what follows
  mutable std::condition_variable changed_;
  std::vector<ReceivedRequest> requests_;
  std::map<std::size_t, std::shared_ptr<Socket>> open_;
  std::vector<std::thread> threads_;  ///< one for each connection ever
  bool isReleased_ = false;
  bool isStopping_ = false;
  std::thread acceptor_;
};

}  // namespace foundation::storage::testing::http
