#include "FakeStoreTest.h"

#include <foundation/storage/backend/s3/detail/http/Interrupt.h>

#include <future>
#include <map>
#include <memory>
#include <string>

namespace foundation::storage::backend::s3::detail::client {
namespace {

using namespace std::chrono_literals;
using Action = std::function<void(const Client&)>;

TEST(ClientFailureTest, SaysWhatAnAnswerMeansAndTriesAgainWhatCanPass) {
  const struct {
    int status;
    const char* code;
    ErrorCode errorCode;
    int attempts;
  } cases[] = {
      {404, "NoSuchKey", ErrorCode::ResourceNotFound, 1},
      {404, "NoSuchBucket", ErrorCode::ResourceNotFound, 1},
      {403, "AccessDenied", ErrorCode::PermissionDenied, 1},
      {403, "InvalidAccessKeyId", ErrorCode::PermissionDenied, 1},
      {403, "SignatureDoesNotMatch", ErrorCode::PermissionDenied, 1},
      {400, "ExpiredToken", ErrorCode::PermissionDenied, 1},
      {401, "", ErrorCode::PermissionDenied, 1},
      {400, "AuthorizationHeaderMalformed", ErrorCode::InvalidLocation, 1},
      {301, "PermanentRedirect", ErrorCode::InvalidLocation, 1},
      {307, "", ErrorCode::InvalidLocation, 1},
      {400, "KeyTooLongError", ErrorCode::InvalidLocation, 1},
      {400, "InvalidBucketName", ErrorCode::InvalidLocation, 1},
      {400, "EntityTooLarge", ErrorCode::FileTooLarge, 1},
      {403, "QuotaExceeded", ErrorCode::NoSpaceLeft, 1},
      {507, "", ErrorCode::NoSpaceLeft, 1},
      {501, "NotImplemented", ErrorCode::UnsupportedOperation, 1},
      {405, "MethodNotAllowed", ErrorCode::UnsupportedOperation, 1},
      {409, "OperationAborted", ErrorCode::ResourceInUse, 1},
      {403, "InvalidObjectState", ErrorCode::ResourceInUse, 1},
      {400, "BadDigest", ErrorCode::IOError, 1},
      {400, "", ErrorCode::IOError, 1},
      {400, "RequestTimeout", ErrorCode::IOError, 3},
      {409, "ConditionalRequestConflict", ErrorCode::ResourceInUse, 3},
      {429, "", ErrorCode::IOError, 3},
      {500, "InternalError", ErrorCode::IOError, 3},
      {502, "", ErrorCode::IOError, 3},
      {503, "SlowDown", ErrorCode::IOError, 3},
      {504, "", ErrorCode::IOError, 3},
  };
  FakeStore store;
  const auto client = store.client();
  for (const auto& each : cases) {
    const auto attempts = static_cast<std::size_t>(each.attempts);
    const auto before = store.count("*");
    const std::string code = each.code;
    const auto fault =
        code.empty() ? answering({.status = each.status, .body = "<html>no</html>"}) : failing(each.status, code);
    store.failNext("PutObject", attempts, fault);
    const auto failure = failureIn([&] { client.put("k", "x", Existing::Replace); });
    ASSERT_TRUE(failure) << each.status << code;
    EXPECT_EQ(failure->errorCode(), each.errorCode) << each.status << code;
    EXPECT_EQ(store.count("*") - before, attempts) << each.status << code;
    const auto& details = failure->details();
    EXPECT_EQ(details.operation, "PutObject");
    EXPECT_EQ(details.status, each.status);
    EXPECT_EQ(details.code, code);
    EXPECT_EQ(details.message, code.empty() ? "" : "No: " + code);
    EXPECT_EQ(details.requestId, "request-" + std::to_string(store.count("*")));
    EXPECT_EQ(details.attempts, each.attempts);
  }
}

/// Every operation, on an object "k" and an upload of it.
std::map<std::string, Action> operations(const UploadId& upload) {
  return {{"HeadObject", [](const Client& client) { client.head("k"); }},
          {"ListObjectsV2", [](const Client& client) { client.list({}); }},
          {"GetObject",
           [](const Client& client) {
             client.read("k", {0, 9});
           }},
          {"PutObject", [](const Client& client) { client.put("k", "x", Existing::Replace); }},
          {"CopyObject", [](const Client& client) { client.copy("bucket", "k", "", "c"); }},
          {"CreateMultipartUpload", [](const Client& client) { client.beginUpload("k"); }},
          {"UploadPart", [=](const Client& client) { client.uploadPart(upload, 1, "x"); }},
          {"UploadPartCopy",
           [=](const Client& client) {
             client.copyPart(upload, 1, "bucket", "k", {0, 1}, "");
           }},
          {"ListMultipartUploads", [](const Client& client) { client.listUploads(""); }},
          {"DeleteObject", [](const Client& client) { client.remove("c"); }},
          {"DeleteObjects", [](const Client& client) { client.remove(std::vector<std::string>{"c"}); }}};
}

TEST(ClientFailureTest, MendsEveryOperation) {
  FakeStore store;
  store.put("k", "x");
  const auto client = store.client();
  const auto upload = client.beginUpload("u");
  for (const auto& [operation, action] : operations(upload)) {
    const auto attempts = [&, &name = operation, &run = action] {
      const auto before = store.count(name);
      run(client);
      return store.count(name) - before;
    };
    store.failNext(operation, 1, failing(503, "SlowDown"));
    EXPECT_EQ(attempts(), 2u) << operation;
    store.failNext(operation, 1, losingTheAnswer());
    EXPECT_EQ(attempts(), 2u) << operation;
    store.failNext(operation, 1, failing(403, "AccessDenied"));
    EXPECT_EQ(errorCodeOf([&, &run = action] { run(client); }), ErrorCode::PermissionDenied) << operation;
  }
}

TEST(ClientFailureTest, FindsFailuresWithinASuccess) {
  FakeStore store;
  store.put("k", "x");
  const auto client = store.client();
  const auto upload = client.beginUpload("u");
  const auto all = operations(upload);
  for (const auto* const operation : {"CopyObject", "UploadPartCopy", "CreateMultipartUpload", "DeleteObjects"}) {
    store.failNext(operation, 1, failing(200, "InternalError"));
    store.failNext(operation, 1, failing(200, "CodeThatNobodyKnows"));
    EXPECT_NO_THROW(all.at(operation)(client)) << operation;
    store.failNext(operation, 1, failing(200, "AccessDenied"));
    EXPECT_EQ(errorCodeOf([&] { all.at(operation)(client); }), ErrorCode::PermissionDenied) << operation;
    EXPECT_EQ(store.count(operation), (operation == std::string("CreateMultipartUpload") ? 5u : 4u));
  }
  store.failNext("ListObjectsV2", 1, answering({.body = "<html>Welcome to our network</html>"}));
  EXPECT_EQ(client.list({}).objects.size(), 1u);
  const std::string content = "<Error><Code>InternalError</Code></Error>";
  store.put("k", content);
  EXPECT_EQ(client.read("k", {0, 100}).bytes, content) << "content is not looked into";
}

TEST(ClientFailureTest, NeverPassesOnDamagedContent) {
  FakeStore store;
  store.put("k", "0123456789");
  const auto client = store.client();
  const testing::http::Fault faults[] = {
      damaging([](const auto& answer) { return answer.cutOffAfter(4); }),
      damaging([](const auto& answer) { return answer.resetAfter(4); }),
      damaging([](const auto& answer) { return answer.flippedAt(4); }),
      answeringWith("content-range", "bytes 1-10/11"),
      answeringWith("content-range", "bytes 0-4/10"),
      answeringWith("content-range", "bytes 0-9/*"),
  };
  std::size_t count = 0;
  for (const auto& fault : faults) {
    store.failNext("GetObject", 1, fault);
    EXPECT_EQ(client.read("k", {0, 10}).bytes, "0123456789");
    EXPECT_EQ(store.count("GetObject"), count += 2);
  }
  store.failNext("GetObject", 3, faults[2]);
  EXPECT_EQ(errorCodeOf([&] { client.read("k", {0, 10}); }), ErrorCode::IOError);
  EXPECT_EQ(store.count("GetObject"), count + 3);
}

TEST(ClientFailureTest, FindsWhatWasDamagedOnItsWayToTheStore) {
  FakeStore store;
  const auto client = store.client();
  store.failNext("PutObject", 1, testing::http::damagingTheBody());
  EXPECT_EQ(errorCodeOf([&] { client.put("k", "content", Existing::Refuse); }), ErrorCode::IOError);
  EXPECT_FALSE(store.get("k"));
  EXPECT_EQ(client.conditions(), Conditions::Unknown) << "it was not refused for its condition";
  const auto wrongETag = answeringWith("etag", "\"00000000000000000000000000000000\"");
  store.failNext("PutObject", 3, wrongETag);
  EXPECT_EQ(errorCodeOf([&] { client.put("k", "content", Existing::Replace); }), ErrorCode::IOError);
  store.failNext("PutObject", 3, damaging([&](auto answer) {
                   answer.headers = {{"etag", "\"00000000000000000000000000000000\""},
                                     {"x-amz-server-side-encryption", "aws:kms"}};
                   return answer;
                 }));
  EXPECT_NO_THROW(client.put("k", "content", Existing::Replace)) << "this ETag is no checksum";
}

TEST(ClientFailureTest, NamesWhatIsWrongWithTheOptions) {
  FakeStore store({.accessKey = "other"});
  EXPECT_EQ(errorCodeOf([&] { store.client().list({}); }), ErrorCode::PermissionDenied);
  FakeStore elsewhere({.region = "moon-1"});
  auto failure = failureIn([&] { elsewhere.client().list({}); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->errorCode(), ErrorCode::InvalidLocation);
  EXPECT_NE(std::string(failure->what()).find("moon-1"), std::string::npos);
  EXPECT_EQ(elsewhere.count("*"), 1u);
  elsewhere.failNext("HeadObject", 1, answering({.status = 400, .headers = {{"x-amz-bucket-region", "mars-2"}}}));
  failure = failureIn([&] { elsewhere.client().head("k"); });
  ASSERT_TRUE(failure);
  EXPECT_NE(std::string(failure->what()).find("mars-2"), std::string::npos) << "HEAD gets it in a header";
}

TEST(ClientFailureTest, LearnsTheStoresTime) {
  for (const auto offset : {-2h, 2h}) {
    FakeStore store({.clockOffset = offset});
    store.put("k", "x");
    const auto client = store.client();
    EXPECT_TRUE(client.head("k")) << "which gets no reason";
    client.list({});
    EXPECT_EQ(store.count("*"), 3u);
  }
}

TEST(ClientFailureTest, EndsWaitingWhenItIsInterrupted) {
  ScriptedServer server([](const ReceivedRequest&) { return ScriptedAnswer().stalledAtOnce(); });
  Settings settings;
  settings.endpoint = server.url();
  auto interrupt = std::make_shared<http::Interrupt>();
  const auto client = Client(settings, "b").endingWith(interrupt);
  auto waiting = std::async(std::launch::async, [&] { client.list({}); });
  server.awaitRequests(1);
  interrupt->raise();
  EXPECT_THROW(waiting.get(), http::Interrupted);

  FakeStore store;
  interrupt = std::make_shared<http::Interrupt>();
  store.onRequest([&](const auto&, const auto&) { interrupt->raise(); });
  store.failNext("*", 9, answering({.status = 503, .headers = {{"retry-after", "19"}}}));
  EXPECT_THROW(store.client().endingWith(interrupt).list({}), http::Interrupted);
  EXPECT_EQ(store.count("*"), 1u) << "a pause ends as well";
}

TEST(ClientFailureTest, StaysWithinItsTime) {
  FakeStore store;
  store.put("k", "x");
  auto settings = store.settings();
  settings.operationTimeout = 2s;  // enough for what works, on a busy machine as well
  settings.http.idleTimeout = 1h;
  const Client client(settings, "bucket");
  store.failNext("*", 1, answering({.status = 503, .headers = {{"retry-after", "19"}}}));
  EXPECT_EQ(errorCodeOf([&] { client.list({}); }), ErrorCode::IOError);
  EXPECT_EQ(store.count("*"), 1u) << "there is no time for what the store asks";
  store.failNext("*", 1, damaging([](const auto& answer) { return answer.stalledAfter(0); }));
  EXPECT_EQ(errorCodeOf([&] { client.list({}); }), ErrorCode::IOError);
  EXPECT_EQ(store.count("*"), 2u);
  EXPECT_TRUE(client.head("k")) << "it works again afterwards";
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::client
