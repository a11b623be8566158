#include "FakeStoreTest.h"

#include <string>
#include <vector>

namespace foundation::storage::backend::s3::detail::client {
namespace {

using Operations = std::vector<std::string>;

TEST(ClientTest, CarriesAnyKeyAndWhatIsStoredWithIt) {
  FakeStore store;
  const auto client = store.client();
  const wire::Headers kept = {{"content-type", "text/x"}, {"cache-control", "no-cache"}, {"x-amz-meta-a", "b  c"}};
  std::size_t count = 0;
  for (const auto& key : {std::string("a/b"), std::string("a +%41&?#\"<>'c"), std::string("/"), std::string("../x//."),
                          std::string("\xC3\xA4"), std::string("\x01\x7F"), std::string(1024, 'k')}) {
    const auto eTag = client.put(key, "content", Existing::Replace, kept);
    ASSERT_TRUE(store.get(key)) << key;
    const auto found = client.head(key);
    ASSERT_TRUE(found) << key;
    EXPECT_EQ(found->size, 7u);
    EXPECT_EQ(found->eTag, eTag);
    EXPECT_EQ(found->md5, wire::md5("content"));
    EXPECT_FALSE(found->lastModified.is_special());
    for (const auto& header : kept)
      EXPECT_EQ(wire::findHeader(found->kept, header.name) ? *wire::findHeader(found->kept, header.name) : "",
                header.name == "x-amz-meta-a" ? "b  c" : header.value);
    EXPECT_EQ(client.read(key, {0, 100}, eTag).bytes, "content");
    client.copy("bucket", key, eTag, "copy");
    EXPECT_EQ(store.get("copy")->content, "content");
    EXPECT_EQ(store.get("copy")->kept.at("x-amz-meta-a"), "b  c");
    EXPECT_EQ(client.list({}).objects.size(), ++count + 1);
    store.erase("copy");
  }
  EXPECT_EQ(store.server.requests().front().header("user-agent"), "foundation-storage/0.1");
}

TEST(ClientTest, ListsPageByPage) {
  FakeStore store;
  for (const auto* const key : {"a/1", "a/2", "b", "c/1", "d"})
    store.put(key, key);
  const auto client = store.client();
  std::string seen;
  Client::Listing listing{.prefix = "", .delimiter = "/", .startAfter = "a/~", .most = 2};
  std::string token;
  do {
    const auto page = client.list(listing, token);
    for (const auto& object : page.objects)
      seen += object.key + ' ';
    for (const auto& prefix : page.prefixes)
      seen += prefix + ' ';
    token = page.nextToken;
  } while (!token.empty());
  EXPECT_EQ(seen, "b c/ d ");
  EXPECT_EQ(store.count("*"), 2u);
}

TEST(ClientTest, AsksForTheBucketOnce) {
  FakeStore store;
  const auto client = store.client();
  EXPECT_FALSE(client.head("a"));
  EXPECT_FALSE(client.head("b"));
  EXPECT_EQ(store.operations(), (Operations{"HeadObject", "HeadBucket", "HeadObject"}));
  const auto failure = failureIn([&] { store.client("other").head("a"); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->errorCode(), ErrorCode::ResourceNotFound);
  EXPECT_NE(std::string(failure->what()).find("bucket"), std::string::npos);
}

TEST(ClientTest, ReadsPieces) {
  FakeStore store;
  store.put("k", "0123456789");
  store.put("empty", "");
  const auto client = store.client();
  const struct {
    Range range;
    const char* bytes;
  } cases[] = {{{0, 10}, "0123456789"}, {{0, 99}, "0123456789"}, {{3, 4}, "3456"},
               {{9, 9}, "9"},           {{10, 1}, ""},           {{99, 1}, ""}};
  for (const auto& each : cases)
    for (const auto knowsRanges : {true, false}) {
      if (!knowsRanges)
        store.failNext("GetObject", 1, ignoring("range"));
      const auto piece = client.read("k", each.range, store.get("k")->eTag);
      EXPECT_EQ(piece.bytes, each.bytes);
      EXPECT_EQ(piece.offset, each.range.offset);
      EXPECT_EQ(piece.object.size, 10u);
      EXPECT_EQ(piece.object.eTag, store.get("k")->eTag);
    }
  EXPECT_EQ(client.read("empty", {0, 5}).object.eTag, store.get("empty")->eTag);
  EXPECT_EQ(errorCodeOf([&] { client.read("none", {0, 1}); }), ErrorCode::ResourceNotFound);
}

TEST(ClientTest, NoticesThatAnObjectHasChanged) {
  FakeStore store;
  store.put("k", "0123456789");
  const auto client = store.client();
  const auto readOld = [&](Range range) { return errorCodeOf([&] { client.read("k", range, "old"); }); };
  EXPECT_EQ(readOld({0, 5}), ErrorCode::ResourceInUse);
  store.failNext("GetObject", 2, ignoring("if-match"));
  EXPECT_EQ(readOld({0, 5}), ErrorCode::ResourceInUse);
  EXPECT_EQ(readOld({50, 5}), ErrorCode::ResourceInUse) << "also behind the end";
}

TEST(ClientTest, WritesInParts) {
  FakeStore store;
  const auto client = store.client();
  const auto upload = client.beginUpload("k", {{"x-amz-meta-a", "b"}});
  const auto second = client.uploadPart(upload, 2, "def");
  const auto first = client.uploadPart(upload, 1, "abc");
  EXPECT_EQ(client.listUploads("").uploads.at(0).uploadId, upload.id);
  EXPECT_FALSE(store.get("k"));
  client.completeUpload(upload, {first, second}, 6, Existing::Refuse);
  EXPECT_EQ(store.get("k")->content, "abcdef");
  EXPECT_EQ(store.get("k")->kept.at("x-amz-meta-a"), "b");
  EXPECT_FALSE(client.head("k")->md5) << "the ETag of several parts is none";

  const auto other = client.beginUpload("k");
  client.abortUpload(other);
  client.abortUpload(other);
  EXPECT_TRUE(store.uploads().empty());
  EXPECT_EQ(errorCodeOf([&] { client.uploadPart(other, 1, "x"); }), ErrorCode::IOError);
  EXPECT_EQ(store.get("k")->content, "abcdef");
}

TEST(ClientTest, RemovesWhateverTheKeysAre) {
  FakeStore store({.lockedKeys = {"locked", "locked\x01"}});
  std::vector<std::string> keys = {"locked", "locked\x01", "odd\x01", "missing"};
  for (int i = 0; i < 1500; ++i)
    keys.push_back("k<&>" + std::to_string(i));
  for (const auto& key : keys)
    store.put(key, "");
  const auto client = store.client();
  const auto failed = client.remove(keys);
  ASSERT_EQ(failed.size(), 2u);
  EXPECT_EQ(failed.front().code, "AccessDenied");
  EXPECT_EQ(store.keys(), (Operations{"locked", "locked\x01"}));
  EXPECT_EQ(store.count("DeleteObjects"), 2u);
  EXPECT_NO_THROW(client.remove("missing"));
  EXPECT_EQ(errorCodeOf([&] { client.remove("locked"); }), ErrorCode::PermissionDenied);
  EXPECT_EQ(errorCodeOf([&] { store.client("other").remove("k"); }), ErrorCode::ResourceNotFound);
}

TEST(ClientTest, RemovesSinglyWhatDoesNotGoInBatches) {
  FakeStore old({.missingOperations = {"DeleteObjects"}});
  const auto client = old.client();
  for (int i = 0; i < 2; ++i) {
    old.put("a", "");
    EXPECT_TRUE(client.remove(std::vector<std::string>{"a", "b"}).empty());
    EXPECT_TRUE(old.keys().empty());
  }
  EXPECT_EQ(old.count("DeleteObjects"), 1u) << "it is not tried again";

  FakeStore busy;
  busy.put("a", "");
  busy.failNext("DeleteObjects", 1,
                answering({.body = "<DeleteResult><Error><Key>a</Key><Code>SlowDown</Code></Error></DeleteResult>"}));
  EXPECT_TRUE(busy.client().remove(std::vector<std::string>{"a"}).empty());
  EXPECT_TRUE(busy.keys().empty());
}

TEST(ClientTest, SignsUnlessNobodyAsks) {
  FakeStore store;
  auto settings = store.settings();
  settings.credentials = [] { return wire::Credentials(); };
  EXPECT_EQ(errorCodeOf([&] { Client(settings, "bucket").list({}); }), ErrorCode::PermissionDenied);
  EXPECT_EQ(store.server.requests().at(0).headers.count("authorization"), 0u);
  int calls = 0;
  settings.credentials = [&] { return wire::Credentials{++calls == 1 ? "oldkey" : "testkey", "s", "token"}; };
  store.failNext("ListObjectsV2", 1, failing(503, "SlowDown"));
  Client(settings, "bucket").list({});
  EXPECT_EQ(calls, 2) << "each attempt is signed anew";
  EXPECT_EQ(store.server.requests().back().header("x-amz-security-token"), "token");
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::client
