#include "FakeStoreTest.h"

#include <foundation/storage/backend/s3/detail/client/Endpoint.h>

#include <map>
#include <string>

namespace foundation::storage::backend::s3::detail::client {
namespace {

using Action = std::function<void(const Client&)>;

/// What becomes of `action` where each request is answered so.
std::optional<StoreFailure> failureAt(const ScriptedAnswer& answer, const Action& action) {
  ScriptedServer server([&](const ReceivedRequest&) { return answer; });
  Settings settings;
  settings.endpoint = server.url();
  settings.addressing = Addressing::Path;
  settings.attempts = 2;
  return failureIn([&] { action(Client(settings, "bucket")); });
}

bool has(const std::optional<StoreFailure>& failure, const std::string& text) {
  return failure && std::string(failure->what()).find(text) != std::string::npos;
}

TEST(HostileStoreTest, RefusesAnswersThatLeadAstray) {
  const std::string key = "<Key>a/k</Key>";
  const std::string object = "<Contents>" + key + "<Size>1</Size></Contents>";
  const std::string more = "<IsTruncated>true</IsTruncated><NextContinuationToken>t</NextContinuationToken>";
  const std::string upload = "<Upload>" + key + "<UploadId>i</UploadId></Upload><IsTruncated>true</IsTruncated>" +
                             "<NextKeyMarker>a/k</NextKeyMarker><NextUploadIdMarker>i</NextUploadIdMarker>";
  const struct {
    std::string body;
    Action action;
    bool isTaken;
  } cases[] = {
      {object + more, [](const Client& client) { client.list({}, "s"); }, true},
      {object + more, [](const Client& client) { client.list({}, "t"); }, false},
      {object, [](const Client& client) { client.list({.prefix = "a/"}); }, true},
      {object, [](const Client& client) { client.list({.prefix = "a/k/"}); }, false},
      {"<CommonPrefixes><Prefix>b/</Prefix></CommonPrefixes>",
       [](const Client& client) { client.list({.prefix = "a/", .delimiter = "/"}); }, false},
      {upload, [](const Client& client) { client.listUploads("", "a/k", "h"); }, true},
      {upload, [](const Client& client) { client.listUploads("", "a/k", "i"); }, false},
  };
  for (const auto& each : cases) {
    const std::string root = each.body == upload ? "ListMultipartUploadsResult" : "ListBucketResult";
    const auto failure = failureAt({.body = "<" + root + ">" + each.body + "</" + root + ">"}, each.action);
    EXPECT_EQ(!failure, each.isTaken) << each.body;
    EXPECT_TRUE(!failure || failure->errorCode() == ErrorCode::IOError) << each.body;
  }
}

TEST(HostileStoreTest, ReadsNothingThatMayBeCutOff) {
  const auto read = [](const Client& client) { EXPECT_EQ(client.read("k", {0, 9}).bytes, "abc"); };
  EXPECT_FALSE(failureAt({.body = "abc"}, read));
  EXPECT_FALSE(failureAt({.headers = {{"transfer-encoding", "chunked"}}, .body = "3\r\nabc\r\n0\r\n\r\n"}, read));
  const ScriptedAnswer endless{.headers = {{"transfer-encoding", "identity"}}, .body = "abc"};
  EXPECT_TRUE(has(failureAt(endless.closing(), read), "where the content ends"));
}

TEST(HostileStoreTest, PassesOnNoControlCharacters) {
  const std::string message = "\x1B[2J\n" + std::string(100'000, 'x');
  const auto failure = failureAt({.status = 403,
                                  .headers = {{"x-amz-request-id",
                                               "a\x1B"
                                               "b"}},
                                  .body = "<Error><Code>a\x7F</Code><Message>" + message + "</Message></Error>"},
                                 [](const Client& client) { client.list({}); });
  ASSERT_TRUE(failure);
  const auto& details = failure->details();
  EXPECT_EQ(details.message.substr(0, 7), " [2J xx");
  EXPECT_LT(details.message.size(), 2'000u);
  EXPECT_EQ(details.code, "a ");
  EXPECT_EQ(details.requestId, "a b");
}

TEST(HostileStoreTest, SaysWhatToDo) {
  const auto head = [](const Client& client) { client.head("k"); };
  const auto elsewhere = failureAt({.status = 400, .headers = {{"x-amz-bucket-region", "moon-1"}}}, head);
  EXPECT_TRUE(has(elsewhere, "moon-1"));
  EXPECT_EQ(elsewhere->errorCode(), ErrorCode::InvalidLocation);
  EXPECT_TRUE(has(failureAt({.status = 403}, head), "access-key")) << "there are no credentials";
  const auto late = failureAt({.body = "<Error><Code>InternalError</Code></Error>"},
                              [](const Client& client) { client.copy("bucket", "k", "", "c"); });
  EXPECT_TRUE(has(late, "try again later"));

  const auto refused = failureIn([] { Endpoint("https://me:secret/x@store.example", Addressing::Path); });
  EXPECT_TRUE(has(refused, "@store.example"));
  EXPECT_FALSE(has(refused, "secret"));
}

TEST(HostileStoreTest, FindsFailuresWhereNoAnswerIsExpected) {
  const std::map<std::string, Action> actions = {
      {"PutObject", [](const Client& client) { client.put("k", "x", Existing::Replace); }},
      {"DeleteObject", [](const Client& client) { client.remove("k"); }},
      {"AbortMultipartUpload", [](const Client& client) {
         client.abortUpload({"k", "1"});
       }}};
  for (const auto& [operation, action] : actions) {
    FakeStore store;
    store.failNext(operation, 1, failing(200, "AccessDenied"));
    const auto client = store.client();
    EXPECT_EQ(errorCodeOf([&, &run = action] { run(client); }), ErrorCode::PermissionDenied) << operation;
    EXPECT_EQ(store.count("*"), 1u) << operation;
  }
  FakeStore store;
  const std::string content = "<Error><Code>AccessDenied</Code></Error>";
  store.put("k", content);
  EXPECT_EQ(store.client().read("k", {0, 100}).bytes, content) << "an object may look like that";
}

TEST(HostileStoreTest, TakesNoObjectWithoutETagForItsOwn) {
  FakeStore store;
  const auto client = store.client();
  const auto upload = client.beginUpload("k");
  client.uploadPart(upload, 1, "x");
  store.failNext("CompleteMultipartUpload", 1, losingTheAnswer());
  store.failNext("HeadObject", 1, answering({.headers = {{"content-length", "1"}}}));
  EXPECT_TRUE(failureIn([&] { client.completeUpload(upload, {{1, "opaque"}}, 1, Existing::Replace); }));
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::client
