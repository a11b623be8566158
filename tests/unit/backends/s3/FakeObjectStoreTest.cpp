#include "support/http/FakeObjectStore.h"

#include <foundation/storage/backend/s3/detail/wire/Digest.h>
#include <foundation/storage/backend/s3/detail/wire/Documents.h>
#include <foundation/storage/backend/s3/detail/wire/Encoding.h>
#include <foundation/storage/backend/s3/detail/wire/Timestamp.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace foundation::storage::testing::http {
namespace {

namespace wire = backend::s3::detail::wire;

ReceivedRequest request(const std::string& method, const std::string& target, const std::string& body = "",
                        const std::map<std::string, std::string>& headers = {}) {
  ReceivedRequest result{.method = method, .target = target, .headers = headers, .body = body};
  result.headers.emplace("authorization", "AWS4-HMAC-SHA256 Credential=testkey/20250101/us-east-1/s3/aws4_request");
  result.headers.emplace("x-amz-date", wire::basicTime(std::chrono::system_clock::now()));
  result.headers.emplace("x-amz-content-sha256", wire::hex(wire::bytesOf(wire::sha256(body))));
  return result;
}

/// The status, and the store's code where there is one.
std::string outcome(const ScriptedAnswer& answer) {
  const auto error = wire::parseError(answer.body);
  return std::to_string(answer.status) + (error ? " " + error->code : "");
}

TEST(FakeObjectStoreTest, RefusesWhatRealOnesRefuse) {
  FakeObjectStore store;
  store.put("there", "content");
  const auto handle = store.handler();
  const struct {
    ReceivedRequest request;
    const char* outcome;
  } cases[] = {
      {request("GET", "/bucket/there"), "200"},
      {request("GET", "/bucket/there", "", {{"range", "bytes=7-"}}), "416 InvalidRange"},
      {request("GET", "/bucket/there", "", {{"if-match", "\"other\""}}), "412 PreconditionFailed"},
      {request("GET", "/bucket/missing"), "404 NoSuchKey"},
      {request("GET", "/elsewhere/there"), "404 NoSuchBucket"},
      {request("GET", "/bucket/a+b"), "403 SignatureDoesNotMatch"},
      {request("GET", "/bucket?list-type=2&prefix=a%2fb"), "403 SignatureDoesNotMatch"},
      {request("GET", "/bucket/there", "", {{"authorization", "Credential=other/"}}), "403 InvalidAccessKeyId"},
      {request("GET", "/bucket/there", "", {{"x-amz-date", "20200101T000000Z"}}), "403 RequestTimeTooSkewed"},
      {request("PUT", "/bucket/new", "x", {{"if-none-match", "*"}}), "200"},
      {request("PUT", "/bucket/there", "x", {{"if-none-match", "*"}}), "412 PreconditionFailed"},
      {request("PUT", "/bucket/there", "x", {{"content-md5", "AAAA"}}), "400 BadDigest"},
      {request("PUT", "/bucket/there", "x", {{"x-amz-content-sha256", "00"}}), "400 XAmzContentSHA256Mismatch"},
      {request("POST", "/bucket/new?uploadId=none"), "404 NoSuchUpload"},
      {request("PATCH", "/bucket/there"), "501 NotImplemented"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(outcome(handle(each.request)), each.outcome) << each.request.method << " " << each.request.target;
  EXPECT_EQ(store.get("there")->content, "content");
}

TEST(FakeObjectStoreTest, ListsInPagesOfAnySize) {
  FakeObjectStore store;
  for (const auto* key : {"a", "b+ c", "d/1", "d/2", "d0", "e/", "z"})
    store.put(key, "");
  const auto handle = store.handler();
  for (const std::size_t size : {1u, 2u, 3u, 1000u}) {
    std::vector<std::string> listed;
    std::string token;
    do {
      const auto query = "&list-type=2&max-keys=" + std::to_string(size) + "&delimiter=%2F&encoding-type=url";
      const auto answer = handle(request("GET", "/bucket?" + token + query));
      const auto page = wire::parseListPage(answer.body);
      ASSERT_LE(page.objects.size() + page.prefixes.size(), size);
      for (const auto& object : page.objects)
        listed.push_back(object.key);
      listed.insert(listed.end(), page.prefixes.begin(), page.prefixes.end());
      token = page.nextToken.empty() ? "" : "continuation-token=" + wire::encode(page.nextToken);
    } while (!token.empty());
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, (std::vector<std::string>{"a", "b+ c", "d/", "d0", "e/", "z"})) << size;
  }
}

TEST(FakeObjectStoreTest, GoesWrongWhenAsked) {
  FakeObjectStore store;
  const auto handle = store.handler();
  store.failNext("PutObject", 1, failing(503, "SlowDown"));
  store.failNext("*", 1, damagingTheBody());
  store.failNext("PutObject", 1, losingTheAnswer());
  const auto put = request("PUT", "/bucket/key", "content");
  EXPECT_EQ(outcome(handle(put)), "503 SlowDown");
  EXPECT_EQ(outcome(handle(put)), "400 XAmzContentSHA256Mismatch");
  EXPECT_FALSE(store.get("key"));
  EXPECT_EQ(handle(put).ending, ScriptedAnswer::Ending::Reset);
  EXPECT_EQ(store.get("key")->content, "content") << "only the answer is lost";
  EXPECT_EQ(handle(put).ending, ScriptedAnswer::Ending::KeepOpen);
  EXPECT_EQ(store.count("PutObject"), 4u);
}

}  // namespace
}  // namespace foundation::storage::testing::http
