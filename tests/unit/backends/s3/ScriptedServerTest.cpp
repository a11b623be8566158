#include "support/http/ScriptedServer.h"

#include <gtest/gtest.h>
#include <curl/curl.h>

#include <future>
#include <memory>
#include <string>

namespace foundation::storage::testing::http {
namespace {

struct Got {
  CURLcode result;
  std::string body;
};

/// A connection that is used again, made by another hand than the one under test.
class Curl {
 public:
  explicit Curl(const ThrowawayCertificate* certificate = nullptr) {
    if (certificate)
      curl_easy_setopt(handle_.get(), CURLOPT_CAINFO, certificate->file().c_str());
  }

  Got get(const std::string& url) {
    Got got{};
    curl_easy_setopt(handle_.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle_.get(), CURLOPT_WRITEDATA, &got.body);
    curl_easy_setopt(
        handle_.get(), CURLOPT_WRITEFUNCTION, +[](char* bytes, size_t one, size_t size, void* body) {
          static_cast<std::string*>(body)->append(bytes, size);
          return one * size;
        });
    got.result = curl_easy_perform(handle_.get());
    return got;
  }

 private:
  std::unique_ptr<CURL, void (*)(CURL*)> handle_{curl_easy_init(), curl_easy_cleanup};
};

ScriptedAnswer script(const ReceivedRequest& request) {
  const ScriptedAnswer whole{.body = "abcdef"};
  if (request.target == "/cut")
    return whole.cutOffAfter(4);
  if (request.target == "/reset")
    return whole.resetAtOnce();
  if (request.target == "/reset-late")
    return whole.resetAfter(0);
  if (request.target == "/flipped")
    return whole.flippedAt(5);
  return request.target == "/closed" ? whole.closing() : whole;
}

TEST(ScriptedServerTest, EndsAnswersAsTheScriptSays) {
  const ThrowawayCertificate certificate;
  for (const auto* used : {static_cast<const ThrowawayCertificate*>(nullptr), &certificate}) {
    ScriptedServer server(script, used);
    Curl curl(used);
    EXPECT_EQ(curl.get(server.url() + "/whole").body, "abcdef");
    EXPECT_EQ(curl.get(server.url() + "/flipped").body, "abcdeg");
    EXPECT_EQ(server.connections(), 1u) << "it stays open";
    EXPECT_EQ(curl.get(server.url() + "/closed").result, CURLE_OK);
    const auto cut = curl.get(server.url() + "/cut");
    EXPECT_EQ(cut.body, "abcd");
    EXPECT_NE(cut.result, CURLE_OK);
    EXPECT_EQ(curl.get(server.url() + "/reset").result, CURLE_RECV_ERROR);
    EXPECT_EQ(curl.get(server.url() + "/reset-late").result, CURLE_RECV_ERROR);
  }
}

TEST(ScriptedServerTest, StallsUntilTheGateOpensOrItEnds) {
  std::promise<void> gate;
  auto stall = std::make_unique<ScriptedServer>([opened = gate.get_future().share()](const ReceivedRequest& request) {
    const ScriptedAnswer whole{.body = "abc"};
    return request.target == "/gate" ? whole.stalledAtOnce(opened) : whole.stalledAfter(1);
  });
  const auto inBackground = [url = stall->url()](const char* path) {
    return std::async(std::launch::async, [=] { return Curl().get(url + path); });
  };
  auto gated = inBackground("/gate");
  auto forever = inBackground("/ever");
  stall->awaitRequests(2);
  gate.set_value();
  EXPECT_EQ(gated.get().body, "abc");
  stall.reset();
  EXPECT_NE(forever.get().result, CURLE_OK);
}

}  // namespace
}  // namespace foundation::storage::testing::http
