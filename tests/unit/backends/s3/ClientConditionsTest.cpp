#include "FakeStoreTest.h"

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace foundation::storage::backend::s3::detail::client {
namespace {

using Operations = std::vector<std::string>;
using testing::http::Fault;

TEST(ClientConditionsTest, FindsOutWhatTheStoreKeeps) {
  using Has = StoreTraits::Conditions;
  const struct {
    Has traits;
    Conditions found;
    Operations first;
    Operations second;
  } cases[] = {
      {Has::Kept, Conditions::Kept, {"HeadObject", "PutObject", "PutObject"}, {"PutObject"}},
      {Has::Ignored, Conditions::Ignored, {"HeadObject", "PutObject", "PutObject"}, {"HeadObject", "PutObject"}},
      {Has::Refused,
       Conditions::Ignored,
       {"HeadObject", "PutObject", "HeadObject", "PutObject"},
       {"HeadObject", "PutObject"}},
  };
  for (const auto& each : cases) {
    FakeStore store({.conditions = each.traits});
    const auto client = store.client();
    EXPECT_EQ(client.conditions(), Conditions::Unknown);
    client.put("a", "a", Existing::Refuse);
    EXPECT_EQ(client.conditions(), each.found);
    EXPECT_EQ(store.operations(), each.first);
    client.put("b", "b", Existing::Refuse);
    auto all = each.first;
    all.insert(all.end(), each.second.begin(), each.second.end());
    EXPECT_EQ(store.operations(), all);
    for (const auto& any : {client, store.client()}) {
      EXPECT_EQ(errorCodeOf([&] { any.put("a", "x", Existing::Refuse); }), ErrorCode::ResourceAlreadyExists);
      EXPECT_EQ(store.get("a")->content, "a");
    }
    const auto create = [&](const char* key) {
      const auto upload = client.beginUpload(key);
      client.completeUpload(upload, {client.uploadPart(upload, 1, "c")}, 1, Existing::Refuse);
    };
    create("c");
    EXPECT_EQ(store.get("c")->content, "c");
    EXPECT_EQ(errorCodeOf([&] { create("a"); }), ErrorCode::ResourceAlreadyExists);
    EXPECT_EQ(store.get("a")->content, "a");
  }
}

TEST(ClientConditionsTest, LetsOneCreate) {
  FakeStore store;
  const auto client = store.client();
  for (const auto* const key : {"a", "b"}) {
    std::atomic<int> winners = 0;
    std::vector<std::thread> threads(12);
    for (auto& thread : threads)
      thread = std::thread([&] {
        const auto code = errorCodeOf([&] { client.put(key, "same", Existing::Refuse); });
        winners += code ? 0 : 1;
        EXPECT_TRUE(!code || code == ErrorCode::ResourceAlreadyExists);
      });
    for (auto& thread : threads)
      thread.join();
    EXPECT_EQ(winners, 1);
  }
}

/// Has somebody else be faster, and the answer get lost.
Fault overtaking(FakeStore& store, const std::string& key, const std::string& content) {
  return [&store, key, content](const auto&, const auto&) {
    store.put(key, content);
    return ScriptedAnswer().resetAtOnce();
  };
}

TEST(ClientConditionsTest, RecognisesWhatItHasCreatedItself) {
  const struct {
    const char* of;
    std::function<void(FakeStore&)> prepare;
    std::optional<ErrorCode> code;
  } cases[] = {
      {"ours", [](auto&) {}, std::nullopt},
      {"ours, compared by content",
       [](auto& store) { store.failNext("HeadObject", 1, answeringWith("etag", "\"opaque\"")); }, std::nullopt},
      {"older",
       [](auto& store) {
         store.failNext("HeadObject", 1, answeringWith("last-modified", "Mon, 12 Oct 2009 17:50:00 GMT"));
       },
       ErrorCode::ResourceAlreadyExists},
      {"of other content", [](auto& store) { store.failNext("PutObject", 1, overtaking(store, "k", "them")); },
       ErrorCode::ResourceAlreadyExists},
      {"of another size", [](auto& store) { store.failNext("PutObject", 1, overtaking(store, "k", "theirs")); },
       ErrorCode::ResourceAlreadyExists},
  };
  for (const auto& each : cases) {
    FakeStore store;
    const auto client = store.client();
    client.put("first", "", Existing::Refuse);
    each.prepare(store);
    store.failNext("PutObject", 1, losingTheAnswer());
    EXPECT_EQ(errorCodeOf([&] { client.put("k", "mine", Existing::Refuse); }), each.code) << each.of;
  }
  FakeStore store;
  const auto client = store.client();
  client.put("k", "mine", Existing::Refuse);
  store.failNext("PutObject", 1, failing(503, "SlowDown"));
  EXPECT_EQ(errorCodeOf([&] { client.put("k", "mine", Existing::Refuse); }), ErrorCode::ResourceAlreadyExists)
      << "a store that was busy has not done anything";
}

TEST(ClientConditionsTest, FindsOutWhetherAnUploadWasCompleted) {
  constexpr auto completion = "CompleteMultipartUpload";
  const struct {
    const char* of;
    std::function<void(FakeStore&)> prepare;
    std::optional<ErrorCode> code;
  } cases[] = {
      {"answer lost", [&](auto& store) { store.failNext(completion, 1, losingTheAnswer()); }, std::nullopt},
      {"answer lost, and the store busy ever since",
       [&](auto& store) {
         store.failNext(completion, 1, losingTheAnswer());
         store.failNext(completion, 2, failing(503, "SlowDown"));
       },
       std::nullopt},
      {"failure within a 200", [&](auto& store) { store.failNext(completion, 1, failing(200, "InternalError")); },
       std::nullopt},
      {"upload aborted", [&](auto& store) { store.failNext(completion, 3, failing(404, "NoSuchUpload")); },
       ErrorCode::IOError},
      {"somebody else's object there",
       [&](auto& store) {
         store.failNext(completion, 1, overtaking(store, "k", "THEM"));
         store.failNext(completion, 1, failing(404, "NoSuchUpload"));
       },
       ErrorCode::IOError},
      {"refused", [&](auto& store) { store.failNext(completion, 1, failing(403, "AccessDenied")); },
       ErrorCode::PermissionDenied},
  };
  for (const auto& each : cases)
    for (const auto existing : {Existing::Replace, Existing::Refuse}) {
      FakeStore store;
      const auto client = store.client();
      const auto upload = client.beginUpload("k");
      const auto part = client.uploadPart(upload, 1, "mine");
      each.prepare(store);
      EXPECT_EQ(errorCodeOf([&] { client.completeUpload(upload, {part}, 4, existing); }), each.code) << each.of;
      EXPECT_TRUE(each.code || store.get("k")->content == "mine") << each.of;
    }
}

TEST(ClientConditionsTest, DoesNotReplaceWhatAppearsBeforeTheCompletion) {
  FakeStore store;
  const auto client = store.client();
  const auto upload = client.beginUpload("k");
  const auto part = client.uploadPart(upload, 1, "mine");
  store.failNext("CompleteMultipartUpload", 1, [&](const auto& request, const auto& act) {
    store.put("k", "theirs");
    return act(request);
  });
  EXPECT_EQ(errorCodeOf([&] { client.completeUpload(upload, {part}, 4, Existing::Refuse); }),
            ErrorCode::ResourceAlreadyExists);
  EXPECT_EQ(store.get("k")->content, "theirs");
}

TEST(ClientConditionsTest, CopiesOnlyWhatIsStillTheSame) {
  for (const auto isIgnored : {false, true}) {
    FakeStore store;
    if (isIgnored)
      store.failNext("*", 99, ignoring("x-amz-copy-source-if-match"));
    store.put("from", "0123456789");
    const auto eTag = store.get("from")->eTag;
    const auto client = store.client();
    const auto upload = client.beginUpload("to");
    client.copy("bucket", "from", eTag, "copy");
    EXPECT_EQ(store.get("copy")->content, "0123456789");
    EXPECT_EQ(store.count("*"), 2u) << "no request more than it takes";
    const auto part = client.copyPart(upload, 1, "bucket", "from", {2, 5}, eTag);
    store.put("from", "changed");
    EXPECT_EQ(errorCodeOf([&] {
                client.copyPart(upload, 2, "bucket", "from", {0, 5}, eTag);
              }),
              ErrorCode::ResourceInUse);
    EXPECT_EQ(errorCodeOf([&] { client.copy("bucket", "from", eTag, "copy"); }), ErrorCode::ResourceInUse);
    client.completeUpload(upload, {part}, 5, Existing::Replace);
    EXPECT_EQ(store.get("to")->content, "23456");
    EXPECT_EQ(store.count("UploadPartCopy"), 3u) << "one to find out what the store does";
  }
}

TEST(ClientConditionsTest, CopiesWhereTheStoreMisjudgesTheCondition) {
  FakeStore store;
  store.put("from", "content");
  const auto eTag = store.get("from")->eTag;
  const auto client = store.client();
  store.failNext("CopyObject", 1, failing(412, "PreconditionFailed"));
  client.copy("bucket", "from", eTag, "to");
  client.copy("bucket", "from", eTag, "to");
  EXPECT_EQ(store.operations(), (Operations{"CopyObject", "HeadObject", "CopyObject", "CopyObject"}));
}

TEST(ClientConditionsTest, TakesPartsOfOddlyNamedObjectsItself) {
  FakeStore store;
  store.addBucket("other");
  store.put("a%41", "0123456789", "other");
  const auto client = store.client();
  EXPECT_FALSE(Client::copiesParts("a%41"));
  const auto upload = client.beginUpload("to");
  const auto part = client.copyPart(upload, 1, "other", "a%41", {2, 3}, store.get("a%41", "other")->eTag);
  EXPECT_EQ(errorCodeOf([&] { client.copyPart(upload, 1, "other", "a%41", {8, 3}, ""); }), ErrorCode::ResourceInUse);
  client.completeUpload(upload, {part}, 3, Existing::Replace);
  EXPECT_EQ(store.get("to")->content, "234");
  EXPECT_EQ(store.count("UploadPartCopy"), 0u);
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::client
