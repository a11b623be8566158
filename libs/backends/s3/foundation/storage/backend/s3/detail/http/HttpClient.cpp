#include <foundation/storage/backend/s3/detail/http/HttpClient.h>

#include <foundation/storage/backend/s3/detail/http/Connection.h>
#include <foundation/storage/backend/s3/detail/http/Transfer.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace foundation::storage::backend::s3::detail::http {

namespace {

constexpr std::size_t mostIdle = 64;

}  // namespace

TransportFailure::TransportFailure(Kind kind, bool mayHaveArrived, const std::string& message)
    : std::runtime_error(message), kind_(kind), mayHaveArrived_(mayHaveArrived) {}

/// Connections that nobody uses at the moment, the last used at the end.
class HttpClient::Pool {
 public:
  /// The last used first, since it is the least likely to have been closed by the other side.
  std::unique_ptr<Connection> take(const std::string& origin) {
    {
      const std::lock_guard lock(mutex_);
      const auto found = std::find_if(idle_.rbegin(), idle_.rend(),
                                      [&](const auto& connection) { return connection->origin() == origin; });
      if (found != idle_.rend()) {
        auto connection = std::move(*found);
        idle_.erase(std::next(found).base());
        return connection;
      }
    }
    return std::make_unique<Connection>(origin);
  }

  void giveBack(std::unique_ptr<Connection> connection) {
    std::unique_ptr<Connection> oldest;  // closed after the lock is gone
    const std::lock_guard lock(mutex_);
    if (idle_.size() == mostIdle) {
      oldest = std::move(idle_.front());
      idle_.erase(idle_.begin());
    }
    idle_.push_back(std::move(connection));
  }

 private:
  std::mutex mutex_;
  std::vector<std::unique_ptr<Connection>> idle_;
};

HttpClient::HttpClient(HttpSettings settings) : settings_(std::move(settings)), pool_(std::make_unique<Pool>()) {}

HttpClient::~HttpClient() = default;

HttpAnswer HttpClient::send(const HttpRequest& request, Interrupt& interrupt) {
  auto connection = pool_->take(originOf(request.url));
  auto answer = Transfer(*connection, settings_, request).run(interrupt);
  pool_->giveBack(std::move(connection));
  return answer;
}

}  // namespace foundation::storage::backend::s3::detail::http
