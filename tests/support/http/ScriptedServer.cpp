#include "support/http/ScriptedServer.h"

#include "support/Retry.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <string_view>
#include <system_error>

namespace foundation::storage::testing::http {
namespace {

/// Removes what comes before the separator, and the separator; all where there is none.
std::string_view takeUntil(std::string_view& text, std::string_view separator) {
  const auto end = text.find(separator);
  const auto taken = text.substr(0, end);
  text.remove_prefix(end == text.npos ? text.size() : end + separator.size());
  return taken;
}

ReceivedRequest parseHead(std::string_view head) {
  ReceivedRequest request;
  auto line = takeUntil(head, "\r\n");
  request.method = takeUntil(line, " ");
  request.target = takeUntil(line, " ");
  while (!head.empty()) {
    line = takeUntil(head, "\r\n");
    const auto name = boost::to_lower_copy(std::string(takeUntil(line, ":")));
    request.headers[name] = boost::trim_copy(std::string(line));
  }
  return request;
}

std::string headOf(const ScriptedAnswer& answer) {
  auto head = "HTTP/1.1 " + std::to_string(answer.status) + " Scripted\r\n";
  bool saysLength = answer.status == 204 || answer.status == 304;
  for (const auto& [name, value] : answer.headers) {
    head += name + ": " + value + "\r\n";
    saysLength = saysLength || boost::iequals(name, "content-length") || boost::iequals(name, "transfer-encoding");
  }
  if (!saysLength)
    head += "content-length: " + std::to_string(answer.body.size()) + "\r\n";
  return head + "\r\n";
}

}  // namespace

std::string ReceivedRequest::header(const std::string& name) const {
  const auto found = headers.find(name);
  return found == headers.end() ? "" : found->second;
}

ScriptedAnswer ScriptedAnswer::flippedAt(std::size_t position) const {
  auto answer = *this;
  answer.body.at(position) = static_cast<char>(answer.body.at(position) ^ 1);
  return answer;
}

ScriptedAnswer ScriptedAnswer::endingSo(Ending how, std::optional<std::size_t> bytes, Gate until) const {
  auto answer = *this;
  answer.ending = how;
  answer.sentBytes = bytes;
  answer.gate = std::move(until);
  return answer;
}

class ScriptedServer::Socket {
 public:
  explicit Socket(int descriptor) : descriptor_(descriptor) {}
  ~Socket() { ::close(descriptor_); }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  int descriptor() const { return descriptor_; }
  /// Ends waiting, whatever thread does it.
  void shutDown() const { ::shutdown(descriptor_, SHUT_RDWR); }
  void startTls(const ThrowawayCertificate& certificate) {
    tls_.reset(SSL_new(certificate.context()), SSL_free);
    SSL_set_fd(tls_.get(), descriptor_);
    isOpen_ = SSL_accept(tls_.get()) == 1;
  }
  void resetWhenClosed() const {
    const linger never{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &never, sizeof never);
  }

  bool write(std::string_view bytes) {
    while (isOpen_ && !bytes.empty()) {
      const auto part = std::min<std::size_t>(bytes.size(), 1 << 20);
      const auto count = tls_ ? SSL_write(tls_.get(), bytes.data(), static_cast<int>(part))
                              : retried([&] { return ::write(descriptor_, bytes.data(), part); });
      isOpen_ = count > 0;
      bytes.remove_prefix(isOpen_ ? static_cast<std::size_t>(count) : 0);
    }
    return isOpen_;
  }

  /// Nothing at the end, and for what is no request.
  std::optional<ReceivedRequest> receive() {
    while (buffer_.find("\r\n\r\n") == buffer_.npos)
      if (!readMore())
        return std::nullopt;
    const auto head = buffer_.substr(0, buffer_.find("\r\n\r\n"));
    buffer_.erase(0, head.size() + 4);
    auto request = parseHead(head);
    const auto length = request.header("content-length");
    std::size_t size = 0;
    if (std::from_chars(length.data(), length.data() + length.size(), size).ptr != length.data() + length.size())
      return std::nullopt;
    if (boost::iequals(request.header("expect"), "100-continue"))
      write("HTTP/1.1 100 Continue\r\n\r\n");
    while (buffer_.size() < size)
      if (!readMore())
        return std::nullopt;
    request.body = buffer_.substr(0, size);
    buffer_.erase(0, size);
    return request;
  }

 private:
  bool readMore() {
    char bytes[64 * 1024];
    const auto count = !isOpen_ ? 0
                       : tls_   ? SSL_read(tls_.get(), bytes, sizeof bytes)
                                : retried([&] { return ::read(descriptor_, bytes, sizeof bytes); });
    if (count > 0)
      buffer_.append(bytes, static_cast<std::size_t>(count));
    return count > 0;
  }

  int descriptor_;
  std::shared_ptr<SSL> tls_;
  bool isOpen_ = true;
  std::string buffer_;
};

ScriptedServer::ScriptedServer(Handler handler, const ThrowawayCertificate* certificate)
    : handler_(std::move(handler)),
      certificate_(certificate),
      listener_(std::make_unique<Socket>(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof address;
  const int descriptor = listener_->descriptor();
  if (::bind(descriptor, generic, size) != 0 || ::listen(descriptor, SOMAXCONN) != 0 ||
      ::getsockname(descriptor, generic, &size) != 0)
    throw std::system_error(errno, std::generic_category(), "a port to listen on");
  url_ = (certificate_ ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(ntohs(address.sin_port));
  acceptor_ = std::thread([this] { acceptConnections(); });
}

ScriptedServer::~ScriptedServer() {
  {
    const std::lock_guard lock(mutex_);
    isStopping_ = true;
    for (const auto& [number, socket] : open_)
      socket->shutDown();
  }
  changed_.notify_all();
  listener_->shutDown();
  acceptor_.join();
  for (auto& thread : threads_)
    thread.join();
}

std::vector<ReceivedRequest> ScriptedServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void ScriptedServer::awaitRequests(std::size_t count) const {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return requests_.size() >= count; });
}

std::size_t ScriptedServer::connections() const {
  const std::lock_guard lock(mutex_);
  return threads_.size();
}

void ScriptedServer::release() {
  {
    const std::lock_guard lock(mutex_);
    isReleased_ = true;
  }
  changed_.notify_all();
}

void ScriptedServer::acceptConnections() {
  // For this thread and those that it starts: a client that goes away must not end the test.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  for (;;) {
    const int descriptor = retried([&] { return ::accept4(listener_->descriptor(), nullptr, nullptr, SOCK_CLOEXEC); });
    const std::lock_guard lock(mutex_);
    if (descriptor < 0)
      return;
    auto socket = std::make_shared<Socket>(descriptor);
    if (isStopping_)
      return;
    const auto number = threads_.size() + 1;
    open_.emplace(number, socket);
    threads_.emplace_back([=, this]() mutable { serve(std::move(socket), number); });
  }
}

void ScriptedServer::serve(std::shared_ptr<Socket> socket, std::size_t number) {
  if (certificate_)
    socket->startTls(*certificate_);
  for (bool goesOn = true; goesOn;) {
    auto request = socket->receive();
    if (request)
      request->connection = number;
    goesOn = request && serveOne(*socket, std::move(*request));
  }
  const std::lock_guard lock(mutex_);
  open_.erase(number);
}

bool ScriptedServer::serveOne(Socket& socket, ReceivedRequest request) {
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
  }
  changed_.notify_all();
  ScriptedAnswer answer;
  try {
    answer = handler_(request);
  } catch (const std::exception& failure) {
    answer = {.status = 500, .body = failure.what()};
  }
  return send(socket, answer, request.method != "HEAD");
}

/// @return whether the connection stays open
bool ScriptedServer::send(Socket& socket, const ScriptedAnswer& answer, bool hasBody) {
  const auto head = headOf(answer);
  const auto message = hasBody ? head + answer.body : head;
  const auto first = answer.sentBytes ? head.size() + std::min(*answer.sentBytes, message.size() - head.size()) : 0;
  if (!socket.write(std::string_view(message).substr(0, first)))
    return false;
  switch (answer.ending) {
    case ScriptedAnswer::Ending::KeepOpen:
      return true;
    case ScriptedAnswer::Ending::Stall:
      return waitForRelease(answer.gate) && socket.write(std::string_view(message).substr(first));
    case ScriptedAnswer::Ending::Reset:
      socket.resetWhenClosed();
      return false;
    default:
      return false;
  }
}

/// @return false where the server stops
bool ScriptedServer::waitForRelease(const ScriptedAnswer::Gate& gate) {
  using namespace std::chrono_literals;
  const auto isOpen = [&] { return gate.valid() && gate.wait_for(0s) == std::future_status::ready; };
  std::unique_lock lock(mutex_);
  while (!isStopping_ && !isReleased_ && !isOpen())
    changed_.wait_for(lock, 10ms);
  return !isStopping_;
}

}  // namespace foundation::storage::testing::http
