#include "support/http/ScriptedServer.h"

#include "support/Retry.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <chrono>
#include <string_view>
#include <system_error>

namespace foundation::storage::testing::http {
namespace {

void check(int result, const char* what) {
  if (result < 0)
    throw std::system_error(errno, std::generic_category(), what);
}

std::string lowered(std::string_view text) {
  std::string result(text);
  std::transform(text.begin(), text.end(), result.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return result;
}

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
    auto& value = request.headers[lowered(takeUntil(line, ":"))];
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    line.remove_suffix(line.size() - 1 - std::min(line.find_last_not_of(" \t"), line.size() - 1));
    value += (value.empty() ? "" : ", ") + std::string(line);
  }
  return request;
}

std::string headOf(const ScriptedAnswer& answer) {
  auto head = "HTTP/1.1 " + std::to_string(answer.status) + " Scripted\r\n";
  bool saysLength = answer.status / 100 == 1 || answer.status == 204 || answer.status == 304;
  for (const auto& [name, value] : answer.headers) {
    head += name + ": " + value + "\r\n";
    saysLength = saysLength || lowered(name) == "content-length" || lowered(name) == "transfer-encoding";
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

ScriptedAnswer ScriptedAnswer::ending_(Ending how, std::optional<std::size_t> bytes, Gate until) const {
  auto answer = *this;
  answer.ending = how;
  answer.sentBytes = bytes;
  answer.gate = std::move(until);
  return answer;
}

ScriptedServer::Socket::~Socket() {
  if (descriptor_ >= 0)
    ::close(descriptor_);
}

/// A connection as bytes.
class ScriptedServer::Wire {
 public:
  Wire(int descriptor, const ThrowawayCertificate* certificate) : descriptor_(descriptor) {
    if (certificate == nullptr)
      return;
    tls_.reset(SSL_new(certificate->context()), SSL_free);
    SSL_set_fd(tls_.get(), descriptor);
    isOpen_ = SSL_accept(tls_.get()) == 1;
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
    if (lowered(request.header("expect")) == "100-continue")
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
      listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof address;
  check(listener_.descriptor(), "socket");
  check(::bind(listener_.descriptor(), generic, size), "bind");
  check(::listen(listener_.descriptor(), SOMAXCONN), "listen");
  check(::getsockname(listener_.descriptor(), generic, &size), "getsockname");
  url_ = (certificate_ ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(ntohs(address.sin_port));
  acceptor_ = std::thread([this] { acceptConnections(); });
}

ScriptedServer::~ScriptedServer() {
  {
    const std::lock_guard lock(mutex_);
    isStopping_ = true;
    for (const auto& [number, socket] : open_)
      ::shutdown(socket.descriptor(), SHUT_RDWR);
  }
  changed_.notify_all();
  ::shutdown(listener_.descriptor(), SHUT_RDWR);
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
    Socket socket(retried([&] { return ::accept4(listener_.descriptor(), nullptr, nullptr, SOCK_CLOEXEC); }));
    const std::lock_guard lock(mutex_);
    if (isStopping_ || socket.descriptor() < 0)
      return;
    const int immediately = 1;
    ::setsockopt(socket.descriptor(), IPPROTO_TCP, TCP_NODELAY, &immediately, sizeof immediately);
    const auto number = threads_.size() + 1;
    threads_.emplace_back([this, descriptor = socket.descriptor(), number] { serve(descriptor, number); });
    open_.emplace(number, std::move(socket));
  }
}

void ScriptedServer::serve(int descriptor, std::size_t number) {
  {
    Wire wire(descriptor, certificate_);
    while (auto request = wire.receive()) {
      request->connection = number;
      {
        const std::lock_guard lock(mutex_);
        requests_.push_back(*request);
      }
      changed_.notify_all();
      const auto scripted = answer(*request);
      if (scripted.ending == ScriptedAnswer::Ending::Reset) {
        const linger never{.l_onoff = 1, .l_linger = 0};
        ::setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &never, sizeof never);
      }
      if (!send(wire, scripted, request->method != "HEAD"))
        break;
    }
  }
  const std::lock_guard lock(mutex_);
  open_.erase(number);
}

ScriptedAnswer ScriptedServer::answer(const ReceivedRequest& request) {
  try {
    return handler_(request);
  } catch (const std::exception& failure) {
    return {.status = 500, .body = failure.what()};
  }
}

/// @return whether the connection stays open
bool ScriptedServer::send(Wire& wire, const ScriptedAnswer& answer, bool hasBody) {
  const auto head = headOf(answer);
  const auto message = hasBody ? head + answer.body : head;
  const auto first = answer.sentBytes ? head.size() + std::min(*answer.sentBytes, message.size() - head.size()) : 0;
  if (!wire.write(std::string_view(message).substr(0, first)))
    return false;
  switch (answer.ending) {
    case ScriptedAnswer::Ending::KeepOpen:
      return true;
    case ScriptedAnswer::Ending::Stall:
      return waitForRelease(answer.gate) && wire.write(std::string_view(message).substr(first));
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
