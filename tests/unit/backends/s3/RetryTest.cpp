#include <foundation/storage/backend/s3/detail/client/ClockOffset.h>
#include <foundation/storage/backend/s3/detail/client/RetryPolicy.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

namespace foundation::storage::backend::s3::detail::client {
namespace {

using namespace std::chrono_literals;
using http::HttpAnswer;
using http::TransportFailure;
using std::chrono::milliseconds;
using std::chrono::system_clock;

TEST(RetryTest, KnowsWhatIsWorthAnotherAttempt) {
  struct Case {
    int status;
    const char* code;
    Outlook outlook;
  };
  const Case cases[] = {
      {429, "", Outlook::Passing},
      {500, "InternalError", Outlook::Uncertain},
      {502, "", Outlook::Uncertain},
      {503, "SlowDown", Outlook::Passing},
      {504, "", Outlook::Uncertain},
      {400, "RequestTimeout", Outlook::Passing},
      {403, "RequestTimeTooSkewed", Outlook::Skewed},
      {200, "InternalError", Outlook::Uncertain},
      {200, "SlowDown", Outlook::Passing},
      {200, "InvalidPart", Outlook::Final},
      {301, "PermanentRedirect", Outlook::Final},
      {400, "BadDigest", Outlook::Final},
      {403, "AccessDenied", Outlook::Final},
      {404, "", Outlook::Final},
      {409, "OperationAborted", Outlook::Final},
      {412, "PreconditionFailed", Outlook::Final},
      {501, "NotImplemented", Outlook::Final},
  };
  for (const auto& [status, code, outlook] : cases)
    EXPECT_EQ(setbackOf(HttpAnswer{.status = status, .headers = {}, .body = {}}, code).outlook, outlook)
        << status << " " << code;
}

TEST(RetryTest, KnowsWhichFailuresOnTheWayPass) {
  using Kind = TransportFailure::Kind;
  struct Case {
    Kind kind;
    bool mayHaveArrived;
    Outlook outlook;
    bool hasTimedOut;
  };
  const Case cases[] = {
      {Kind::Unresolved, false, Outlook::Passing, false}, {Kind::Unreachable, false, Outlook::Passing, false},
      {Kind::TimedOut, false, Outlook::Passing, true},    {Kind::TimedOut, true, Outlook::Uncertain, true},
      {Kind::Broken, true, Outlook::Uncertain, false},    {Kind::Untrusted, false, Outlook::Final, false},
      {Kind::Misconfigured, false, Outlook::Final, false}};
  for (const auto& [kind, mayHaveArrived, outlook, hasTimedOut] : cases) {
    const auto setback = setbackOf(TransportFailure(kind, mayHaveArrived, ""));
    EXPECT_EQ(setback.outlook, outlook) << static_cast<int>(kind);
    EXPECT_EQ(setback.hasTimedOut, hasTimedOut) << static_cast<int>(kind);
  }
}

TEST(RetryTest, EndsAfterTheLastAttempt) {
  using Outlooks = std::vector<Outlook>;
  struct Case {
    int attempts;
    Outlooks outlooks;
    std::size_t pauses;
  };
  const auto passing = Outlook::Passing;
  const Case cases[] = {{1, {passing}, 0},
                        {3, Outlooks(5, passing), 2},
                        {5, {passing, Outlook::Final}, 1},
                        {5, {Outlook::Skewed, passing, Outlook::Uncertain, Outlook::Skewed}, 3},
                        {5, {Outlook::Skewed, Outlook::Skewed}, 1}};
  for (const auto& [attempts, outlooks, pauses] : cases) {
    RetryBudget budget;
    RetryPolicy policy(attempts, budget);
    std::size_t count = 0;
    while (count < outlooks.size() && policy.pauseAfter({outlooks[count]}))
      ++count;
    EXPECT_EQ(count, pauses);
  }
}

TEST(RetryTest, PausesAtRandomUpToABoundThatDoubles) {
  const milliseconds bounds[] = {100ms, 200ms, 400ms, 800ms, 1600ms, 3200ms, 6400ms, 12'800ms, 20s, 20s, 20s};
  std::vector<std::vector<milliseconds>> pauses(std::size(bounds));
  for (int i = 0; i < 200; ++i) {
    RetryBudget budget;
    RetryPolicy policy(20, budget);
    for (auto& column : pauses)
      column.push_back(policy.pauseAfter({Outlook::Passing}).value());
  }
  for (std::size_t i = 0; i < pauses.size(); ++i) {
    const auto [least, most] = std::minmax_element(pauses[i].begin(), pauses[i].end());
    EXPECT_GE(*least, 0ms);
    EXPECT_LT(*least, bounds[i] / 2);
    EXPECT_GT(*most, bounds[i] / 2);
    EXPECT_LE(*most, bounds[i]);
  }
}

TEST(RetryTest, DoesAsTheStoreWishes) {
  struct Case {
    const char* retryAfter;
    const char* date;
    milliseconds wish;
  };
  const char* const noon = "Wed, 12 Oct 2022 12:00:00 GMT";
  const Case cases[] = {{"3", noon, 3s},
                        {"0", noon, 0s},
                        {"86400", noon, 20s},
                        {"99999999999999999999", noon, 20s},
                        {"-1", noon, 0s},
                        {"3 s", noon, 0s},
                        {"soon", noon, 0s},
                        {"Wed, 12 Oct 2022 12:00:07 GMT", noon, 7s},
                        {"Wed, 12 Oct 2022 13:00:00 GMT", noon, 20s},
                        {"Wed, 12 Oct 2022 11:59:00 GMT", noon, 0s},
                        {"Wed, 12 Oct 2022 12:00:07 GMT", "", 0s}};
  for (const auto& [retryAfter, date, wish] : cases) {
    SCOPED_TRACE(retryAfter);
    HttpAnswer answer{.status = 503, .headers = {{"retry-after", retryAfter}}, .body = {}};
    if (*date != '\0')
      answer.headers.push_back({"date", date});
    RetryBudget budget;
    const auto pause = RetryPolicy(2, budget).pauseAfter(setbackOf(answer, "SlowDown"));
    ASSERT_TRUE(pause);
    EXPECT_GE(*pause, wish);
    EXPECT_LE(*pause, wish + 100ms);
  }
}

TEST(RetryTest, ThreadsShareABudget) {
  RetryBudget budget;
  std::atomic<int> retries = 0;
  const auto retry = [&] {
    while (RetryPolicy(2, budget).pauseAfter({Outlook::Uncertain}))
      ++retries;
  };
  std::thread other(retry);
  retry();
  other.join();
  EXPECT_EQ(retries, RetryBudget::capacity / 5);

  for (int i = 0; i < 12; ++i)
    budget.succeed();
  EXPECT_TRUE(RetryPolicy(2, budget).pauseAfter({Outlook::Uncertain, true})) << "10 of 12";
  EXPECT_FALSE(RetryPolicy(2, budget).pauseAfter({Outlook::Uncertain}));
  EXPECT_FALSE(RetryPolicy(2, budget).pauseAfter({Outlook::Uncertain, true}));

  for (int i = 0; i < 2 * RetryBudget::capacity; ++i)
    budget.succeed();
  retries = 0;
  retry();
  EXPECT_EQ(retries, RetryBudget::capacity / 5) << "no more than it holds";
}

std::string httpTime(system_clock::time_point time) {
  const auto seconds = system_clock::to_time_t(time);
  char text[64];
  std::strftime(text, sizeof text, "%a, %d %b %Y %H:%M:%S GMT", std::gmtime(&seconds));
  return text;
}

TEST(RetryTest, LearnsTheClockOfTheStore) {
  struct Case {
    const char* what;
    int status;
    const char* code;
    std::chrono::minutes ahead;
    bool isLearnt;
  };
  const Case cases[] = {
      {"it says so", 403, "RequestTimeTooSkewed", 20min, true},
      {"it is behind", 403, "RequestTimeTooSkewed", -300min, true},
      {"an answer to HEAD", 403, "", 20min, true},
      {"clocks agree: something else is wrong", 403, "", 1min, false},
      {"it says something else", 403, "AccessDenied", 20min, false},
      {"no refusal", 404, "", 20min, false},
  };
  for (const auto& [what, status, code, ahead, isLearnt] : cases) {
    SCOPED_TRACE(what);
    ClockOffset clock;
    const HttpAnswer answer{.status = status, .headers = {{"date", httpTime(system_clock::now() + ahead)}}, .body = {}};
    const auto before = clock.now();
    EXPECT_EQ(clock.learn(answer, code, before), isLearnt);
    // What all of it takes is far less than the minutes that it is about.
    const auto offset = std::chrono::round<std::chrono::minutes>(clock.now() - before);
    EXPECT_EQ(offset, isLearnt ? ahead : 0min);
    EXPECT_EQ(clock.learn(answer, code, before), isLearnt) << "other requests that were signed before, too";
    if (*code == '\0') {
      EXPECT_FALSE(clock.learn(answer, code, clock.now())) << "not one whose time was right";
    }
  }
  ClockOffset clock;
  for (const auto& headers : {wire::Headers{}, wire::Headers{{"date", "yesterday"}}})
    EXPECT_FALSE(clock.learn({.status = 403, .headers = headers, .body = {}}, "RequestTimeTooSkewed", clock.now()));
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::client
