#include <foundation/storage/backend/s3/detail/client/RetryPolicy.h>

#include <foundation/storage/backend/s3/detail/wire/Timestamp.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <algorithm>
#include <charconv>
#include <random>
#include <utility>

namespace foundation::storage::backend::s3::detail::client {

using http::TransportFailure;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds firstBound{100};
constexpr milliseconds longestPause{20'000};

Outlook outlookOf(int status, std::string_view code) {
  if (code == "RequestTimeTooSkewed")
    return Outlook::Skewed;
  if (code == "SlowDown" || code == "RequestTimeout" || code == "ServiceUnavailable" || status == 429 || status == 503)
    return Outlook::Passing;
  if (code == "InternalError" || status == 500 || status == 502 || status == 504)
    return Outlook::Uncertain;
  return Outlook::Final;
}

/// How far a time in a header is ahead of the answer's own, so that it does not matter whether our clock is right.
milliseconds untilTime(const wire::Headers& headers, const std::string& value) {
  const auto time = wire::parseHttpTime(value);
  const auto* const date = wire::findHeader(headers, "date");
  const auto now = date ? wire::parseHttpTime(*date) : boost::posix_time::second_clock::universal_time();
  return time.is_special() || now.is_special() ? milliseconds(0) : milliseconds((time - now).total_milliseconds());
}

/// What "retry-after" says, in seconds or as a time (RFC 9110, 10.2.3).
milliseconds wishOf(const wire::Headers& headers) {
  const auto* const value = wire::findHeader(headers, "retry-after");
  if (!value)
    return milliseconds(0);
  unsigned count = 0;
  const auto end = value->data() + value->size();
  const auto [parsed, error] = std::from_chars(value->data(), end, count);
  if (error == std::errc::result_out_of_range)
    return longestPause;
  const auto isNumber = error == std::errc() && parsed == end;
  const auto wish = isNumber ? milliseconds(std::chrono::seconds(count)) : untilTime(headers, *value);
  return std::clamp(wish, milliseconds(0), longestPause);
}

milliseconds randomUpTo(milliseconds bound) {
  thread_local std::minstd_rand source(std::random_device{}());
  return milliseconds(std::uniform_int_distribution<milliseconds::rep>(0, bound.count())(source));
}

/// The longest pause that comes without a wish of the store.
milliseconds boundAfter(int attempts) {
  constexpr int doublings = 8;  // more than that pass the longest pause
  return std::min(longestPause, firstBound * (1 << std::min(attempts - 1, doublings)));
}

}  // namespace

Setback setbackOf(const http::HttpAnswer& answer, std::string_view code) {
  return {outlookOf(answer.status, code), false, wishOf(answer.headers)};
}

Setback setbackOf(const TransportFailure& failure) {
  using Kind = TransportFailure::Kind;
  const auto kind = failure.kind();
  if (kind == Kind::Untrusted || kind == Kind::Misconfigured)
    return {Outlook::Final};
  return {failure.mayHaveArrived() ? Outlook::Uncertain : Outlook::Passing, kind == Kind::TimedOut};
}

std::optional<milliseconds> RetryPolicy::pauseAfter(const Setback& setback) {
  ++done_;
  const auto isSkewed = setback.outlook == Outlook::Skewed;
  const auto isSkewedAgain = isSkewed && std::exchange(isSkewKnown_, true);
  if (setback.outlook == Outlook::Final || isSkewedAgain || done_ >= attempts_)
    return std::nullopt;
  using Cost = RetryBudget::Cost;
  if (!budget_.take(setback.hasTimedOut ? Cost::RetryAfterTimeout : Cost::Retry))
    return std::nullopt;
  return isSkewed ? milliseconds(0) : randomUpTo(boundAfter(done_)) + setback.wish;
}

}  // namespace foundation::storage::backend::s3::detail::client
