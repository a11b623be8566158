#include <foundation/storage/backend/s3/detail/http/Connection.h>

#include <foundation/storage/backend/s3/detail/http/HttpClient.h>

#include <algorithm>
#include <linux/sockios.h>
#include <mutex>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <new>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace foundation::storage::backend::s3::detail::http {

namespace {

/// Is never undone: other parts of the program may use libcurl too, until its very end, and cannot be asked.
void initialiseLibrary() {
  static std::once_flag isDone;
  std::call_once(isDone, [] {
    if (const auto code = curl_global_init(CURL_GLOBAL_DEFAULT); code != CURLE_OK)
      throw TransportFailure(TransportFailure::Kind::Misconfigured, false,
                             std::string("libcurl cannot be used: ") + curl_easy_strerror(code));
  });
}

template <class Handle>
Handle requireHandle(typename Handle::pointer made) {
  if (!made)
    throw std::bad_alloc();
  return Handle(made);
}

MultiHandle makeMulti() {
  initialiseLibrary();
  auto multi = requireHandle<MultiHandle>(curl_multi_init());
  curl_multi_setopt(multi.get(), CURLMOPT_MAXCONNECTS, 1L);
  return multi;
}

}  // namespace

Connection::Connection(std::string origin)
    : origin_(std::move(origin)), multi_(makeMulti()), easy_(requireHandle<EasyHandle>(curl_easy_init())) {}

curl_socket_t Connection::openSocket(const curl_sockaddr& address) {
  sockets_.reserve(sockets_.size() + 1);
  // Not to be inherited by programs that the process starts.
  const auto opened = socket(address.family, address.socktype | SOCK_CLOEXEC, address.protocol);
  if (opened != CURL_SOCKET_BAD)
    sockets_.push_back(opened);
  return opened;
}

int Connection::closeSocket(void* self, curl_socket_t descriptor) noexcept {
  auto& sockets = static_cast<Connection*>(self)->sockets_;
  sockets.erase(std::remove(sockets.begin(), sockets.end(), descriptor), sockets.end());
  return close(descriptor);
}

std::int64_t Connection::bytesInQueue() const {
  int count = 0;
  return !sockets_.empty() && ioctl(sockets_.back(), SIOCOUTQ, &count) == 0 ? count : 0;
}

void Connection::acknowledgeAtOnce() const {
  const int on = 1;
  if (!sockets_.empty())  // a mere wish: that it fails costs nothing but time
    static_cast<void>(setsockopt(sockets_.back(), IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on));
}

std::string originOf(std::string_view url) {
  const auto scheme = url.find("://");
  const auto host = scheme == std::string_view::npos ? 0 : scheme + 3;
  const auto end = url.find_first_of("/?#", host);
  const auto user = url.substr(host, end - host).rfind('@');
  const auto skipped = user == std::string_view::npos ? 0 : user + 1;
  return std::string(url.substr(0, host)).append(url.substr(0, end).substr(host + skipped));
}

}  // namespace foundation::storage::backend::s3::detail::http
