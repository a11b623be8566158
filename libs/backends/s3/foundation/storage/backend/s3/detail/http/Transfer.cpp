#include <foundation/storage/backend/s3/detail/http/Transfer.h>

#include <foundation/storage/backend/s3/detail/http/Options.h>
#include <foundation/storage/backend/s3/detail/http/Outcome.h>

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>

namespace foundation::storage::backend::s3::detail::http {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds betweenQuestions{50};
constexpr milliseconds longestWait{10'000};

template <class Value>
Value info(CURL* easy, CURLINFO what) {
  Value value{};
  return curl_easy_getinfo(easy, what, &value) == CURLE_OK ? value : Value{};
}

void require(CURLMcode code) {
  if (code == CURLM_OUT_OF_MEMORY)
    throw std::bad_alloc();
  if (code != CURLM_OK)
    throw TransportFailure(TransportFailure::Kind::Broken, true,
                           std::string("libcurl cannot go on: ") + curl_multi_strerror(code));
}

}  // namespace

Transfer::Transfer(Connection& connection, const HttpSettings& settings, const HttpRequest& request)
    : connection_(connection), settings_(settings), request_(request), reception_(connection.origin(), request) {
  setConnectionOptions(connection_.easy(), settings);
  lines_ = setRequestOptions(connection_.easy(), request);
  setCallbacks();
}

Transfer::~Transfer() {
  curl_multi_remove_handle(connection_.multi(), connection_.easy());
  curl_easy_reset(connection_.easy());
}

void Transfer::setCallbacks() {
  const auto easy = connection_.easy();
  setOption(easy, CURLOPT_ERRORBUFFER, detail_.data());
  setOption(easy, CURLOPT_HEADERFUNCTION, &Transfer::onHeader);
  setOption(easy, CURLOPT_HEADERDATA, static_cast<void*>(this));
  setOption(easy, CURLOPT_WRITEFUNCTION, &Transfer::onBody);
  setOption(easy, CURLOPT_WRITEDATA, static_cast<void*>(this));
  setOption(easy, CURLOPT_PREREQFUNCTION, &Transfer::onRequest);
  setOption(easy, CURLOPT_PREREQDATA, static_cast<void*>(this));
  setOption(easy, CURLOPT_OPENSOCKETFUNCTION, &Transfer::onOpenSocket);
  setOption(easy, CURLOPT_OPENSOCKETDATA, static_cast<void*>(this));
  setOption(easy, CURLOPT_CLOSESOCKETFUNCTION, &Connection::closeSocket);
  setOption(easy, CURLOPT_CLOSESOCKETDATA, static_cast<void*>(&connection_));
}

HttpAnswer Transfer::run(Interrupt& interrupt) {
  require(curl_multi_add_handle(connection_.multi(), connection_.easy()));
  waitForEnd(interrupt);
  if (thrown_)
    std::rethrow_exception(thrown_);
  requireSuccess(result());
  return reception_.finish(static_cast<int>(info<long>(connection_.easy(), CURLINFO_RESPONSE_CODE)));
}

void Transfer::waitForEnd(Interrupt& interrupt) {
  std::atomic<bool> isRaised = false;
  const Interrupt::Listener listener(interrupt, [&] {
    isRaised = true;
    curl_multi_wakeup(connection_.multi());
  });
  auto nextQuestion = Clock::now();
  lastMoved_ = nextQuestion;
  for (int running = 1;;) {
    const auto isTime = Clock::now() >= nextQuestion;
    if (isTime)
      nextQuestion = Clock::now() + betweenQuestions;
    if (isRaised || (isTime && interrupt.isRaised()))
      throw Interrupted();
    require(curl_multi_perform(connection_.multi(), &running));
    if (running == 0)
      return;
    requireMovement();
    connection_.acknowledgeAtOnce();
    require(curl_multi_poll(connection_.multi(), nullptr, 0, patience(interrupt), nullptr));
  }
}

int Transfer::patience(const Interrupt& interrupt) const {
  // More than once in that time, as movement in the machine's own queue wakes nobody.
  auto time = std::clamp(settings_.idleTimeout / 4, milliseconds(1), longestWait);
  if (interrupt.hasQuestion())
    time = std::min(time, betweenQuestions);
  const auto now = Clock::now();
  if (request_.deadline < now + time)
    time = std::max(milliseconds(0), std::chrono::ceil<milliseconds>(request_.deadline - now));
  return static_cast<int>(time.count());
}

void Transfer::requireMovement() {
  const auto now = Clock::now();
  const auto fail = [this](const std::string& detail) {
    throw failureOf({CURLE_OPERATION_TIMEDOUT, connection_.origin(), detail, hasBegun_});
  };
  if (now >= request_.deadline)
    fail("the time for the operation is over");
  const auto count = moved();
  if (!hasBegun_ || count != moved_) {  // making the connection has a time of its own
    lastMoved_ = now;
    moved_ = count;
  } else if (now - lastMoved_ >= settings_.idleTimeout) {
    fail("nothing has moved for " + std::to_string(settings_.idleTimeout.count()) + " ms");
  }
}

std::int64_t Transfer::moved() const {
  const auto easy = connection_.easy();
  return info<curl_off_t>(easy, CURLINFO_SIZE_UPLOAD_T) + info<curl_off_t>(easy, CURLINFO_SIZE_DOWNLOAD_T) +
         info<long>(easy, CURLINFO_REQUEST_SIZE) + info<long>(easy, CURLINFO_HEADER_SIZE) - connection_.bytesInQueue();
}

CURLcode Transfer::result() const {
  int left = 0;
  while (const auto* message = curl_multi_info_read(connection_.multi(), &left))
    if (message->msg == CURLMSG_DONE)
      return message->data.result;
  throw std::logic_error("libcurl has ended a transfer without a result");
}

void Transfer::requireSuccess(CURLcode code) const {
  if (code == CURLE_OK)
    return;
  if (code == CURLE_OUT_OF_MEMORY)
    throw std::bad_alloc();
  const std::string detail = detail_.front() == '\0' ? curl_easy_strerror(code) : detail_.data();
  throw failureOf({code, connection_.origin(), detail, hasBegun_});
}

curl_socket_t Transfer::openSocket(const curl_sockaddr& address) {
  // Where a kept connection turns out to be dead, libcurl would send once more. That is for the caller to decide, who
  // has to know that the store may have acted already; only of requests that change nothing it cannot matter.
  if (hasBegun_ && request_.method != "GET" && request_.method != "HEAD")
    return CURL_SOCKET_BAD;
  hasBegun_ = false;
  return connection_.openSocket(address);
}

template <class Result, class Action>
Result Transfer::guard(Result failed, const Action& action) noexcept {
  try {
    return action();
  } catch (...) {
    thrown_ = std::current_exception();
    return failed;
  }
}

std::size_t Transfer::onHeader(char* bytes, std::size_t one, std::size_t count, void* self) noexcept {
  auto& transfer = *static_cast<Transfer*>(self);
  return transfer.guard<std::size_t>(0, [&] {
    transfer.reception_.addLine({bytes, one * count});
    return one * count;
  });
}

std::size_t Transfer::onBody(char* bytes, std::size_t one, std::size_t count, void* self) noexcept {
  auto& transfer = *static_cast<Transfer*>(self);
  return transfer.guard<std::size_t>(0, [&] {
    transfer.reception_.addBody({bytes, one * count});
    return one * count;
  });
}

int Transfer::onRequest(void* self, char*, char*, int, int) noexcept {
  static_cast<Transfer*>(self)->hasBegun_ = true;
  return CURL_PREREQFUNC_OK;
}

curl_socket_t Transfer::onOpenSocket(void* self, curlsocktype, curl_sockaddr* address) noexcept {
  auto& transfer = *static_cast<Transfer*>(self);
  return transfer.guard<curl_socket_t>(CURL_SOCKET_BAD, [&] { return transfer.openSocket(*address); });
}

}  // namespace foundation::storage::backend::s3::detail::http
