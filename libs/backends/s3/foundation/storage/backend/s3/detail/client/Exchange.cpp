#include <foundation/storage/backend/s3/detail/client/Exchange.h>

#include <foundation/storage/backend/s3/detail/client/RetryPolicy.h>
#include <foundation/storage/backend/s3/detail/wire/Digest.h>
#include <foundation/storage/backend/s3/detail/wire/Documents.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace foundation::storage::backend::s3::detail::client {

using std::chrono::steady_clock;

namespace {

constexpr auto userAgent = "foundation-storage/0.1";

std::string formatQuery(const std::vector<wire::Parameter>& query) {
  return query.empty() ? std::string() : "?" + wire::encodeQuery(query);
}

bool isTaken(const Call& call, int status) {
  return std::find(call.alsoTaken.begin(), call.alsoTaken.end(), status) != call.alsoTaken.end();
}

/// A failure within a 200 comes of something that the store had begun to do.
Setback setbackOf(const http::HttpAnswer& answer, const Refusal& refusal) {
  auto setback = client::setbackOf(answer, refusal.code);
  if (refusal.code == "ConditionalRequestConflict")
    setback.outlook = Outlook::Passing;
  else if (setback.outlook == Outlook::Final && answer.status < 300 && !isExplained(refusal))
    setback.outlook = Outlook::Uncertain;
  return setback;
}

}  // namespace

/// One call, with all its attempts.
class Exchange::Attempts {
 public:
  Attempts(Exchange& exchange, const Call& call, http::Interrupt& interrupt)
      : exchange_(exchange),
        call_(call),
        interrupt_(interrupt),
        place_(exchange.endpoint_.place(call.bucket, call.key)),
        url_(place_.origin + place_.path + formatQuery(call.query)),
        payloadHash_(wire::hex(wire::bytesOf(wire::sha256(call.body)))),
        policy_(exchange.settings_.attempts, exchange.budget_) {
    reply_.begun = steady_clock::now();
    deadline_ = reply_.begun + exchange.settings_.operationTimeout;
  }

  Reply run() {
    while (!attempt())
      prepareNext();
    exchange_.budget_.succeed();
    return std::move(reply_);
  }

 private:
  /// Whether there is an answer to return.
  bool attempt() {
    ++reply_.attempts;
    try {
      reply_.answer = exchange_.http_.send(signedRequest(), interrupt_);
      return isAnswered();
    } catch (const http::TransportFailure& failure) {
      note(client::setbackOf(failure), failureOf(failure, call_.operation, reply_.attempts));
    } catch (const BadAnswer& failure) {
      noteBadAnswer(failure.what());
    } catch (const wire::MalformedDocument& failure) {
      noteBadAnswer(failure.what());
    }
    return false;
  }

  http::HttpRequest signedRequest() {
    signedAt_ = exchange_.clock_.now();
    const wire::Request request{call_.method, place_.host, place_.path, call_.query, call_.headers, call_.body};
    const auto credentials = exchange_.settings_.credentials();
    isOfNobody_ = credentials.isAnonymous();
    auto headers = exchange_.signer_.sign(request, credentials, payloadHash_, signedAt_);
    headers.push_back({"user-agent", userAgent});  // not signed: proxies may change it
    return {.method = call_.method,
            .url = url_,
            .headers = std::move(headers),
            .body = call_.body,
            .deadline = deadline_,
            .longestAnswer = call_.longestAnswer};
  }

  bool isAnswered() {
    const auto& answer = reply_.answer;
    if (answer.status < 300 && isExpected(answer))
      return true;
    auto refusal = refusalOf(answer);
    refusal.isOfNobody = isOfNobody_;
    auto setback = setbackOf(answer, refusal);
    if (exchange_.clock_.learn(answer, refusal.code, signedAt_))
      setback.outlook = Outlook::Skewed;
    else if (setback.outlook == Outlook::Skewed)
      setback.outlook = Outlook::Final;
    if (setback.outlook == Outlook::Final && isTaken(call_, answer.status))
      return true;
    note(setback, failureOf(refusal, call_.operation, reply_.attempts));
    return false;
  }

  /// A failure may hide in a 200: of what takes long, the store begins the answer before it knows. Only what is read
  /// may look like one, and be the content of an object.
  bool isExpected(const http::HttpAnswer& answer) const {
    if (call_.method != "GET" && wire::parseError(answer.body))
      return false;
    try {
      if (call_.check)
        call_.check(answer);
      return true;
    } catch (const wire::MalformedDocument&) {
      if (wire::parseError(answer.body))
        return false;
      throw;
    }
  }

  void noteBadAnswer(const char* reason) {
    note({},
         {provider::ErrorCode::IOError,
          std::string("The store's answer cannot be used: ") + reason,
          {.operation = std::string(call_.operation), .status = reply_.answer.status, .attempts = reply_.attempts}});
  }

  void note(const Setback& setback, StoreFailure failure) {
    setback_ = setback;
    failure_ = std::move(failure);
    reply_.mayBeDone = reply_.mayBeDone || setback.outlook == Outlook::Uncertain;
  }

  /// Waits until the next attempt; throws where there is to be none.
  void prepareNext() {
    const auto pause = policy_.pauseAfter(setback_);
    if (!pause || steady_clock::now() + *pause >= deadline_) {
      auto details = failure_->details();
      details.mayBeDone = reply_.mayBeDone;
      throw StoreFailure(failure_->errorCode(), failure_->what(), details);
    }
    if (interrupt_.waitFor(*pause))
      throw http::Interrupted();
  }

  Exchange& exchange_;
  const Call& call_;
  http::Interrupt& interrupt_;
  const Endpoint::Place place_;
  const std::string url_;
  const std::string payloadHash_;
  RetryPolicy policy_;
  steady_clock::time_point deadline_;
  std::chrono::system_clock::time_point signedAt_;
  bool isOfNobody_ = false;
  Reply reply_;
  Setback setback_;  ///< of the last attempt, as is what follows
  std::optional<StoreFailure> failure_;
};

Exchange::Exchange(const Settings& settings)
    : settings_(settings),
      endpoint_(settings.endpoint, settings.addressing),
      signer_(settings.region),
      http_(settings.http) {}

Reply Exchange::send(const Call& call, http::Interrupt& interrupt) {
  auto reply = Attempts(*this, call, interrupt).run();
  if (reply.answer.status < 300)
    learnt_.addBucket(call.bucket);
  return reply;
}

}  // namespace foundation::storage::backend::s3::detail::client
