#include <foundation/storage/backend/s3/detail/client/Endpoint.h>
#include <foundation/storage/backend/s3/detail/client/StoreFailure.h>

#include <gtest/gtest.h>

namespace foundation::storage::backend::s3::detail::client {
namespace {

TEST(EndpointTest, PutsBucketsWhereTheyCanBe) {
  constexpr auto path = Addressing::Path;
  constexpr auto host = Addressing::VirtualHost;
  const struct {
    const char* endpoint;
    Addressing addressing;
    const char* bucket;
    const char* url;
    const char* host;
  } cases[] = {
      {"https://store.example", path, "b", "https://store.example/b/k", "store.example"},
      {"https://store.example", host, "b", "https://b.store.example/k", "b.store.example"},
      {"https://store.example:443/", host, "b", "https://b.store.example/k", "b.store.example"},
      {"http://store.example:443", host, "b", "http://b.store.example:443/k", "b.store.example:443"},
      {"HTTP://store.example:80", path, "b", "http://store.example/b/k", "store.example"},
      {"https://store.example", host, "b.c", "https://store.example/b.c/k", "store.example"},
      {"http://store.example", host, "b.c", "http://b.c.store.example/k", "b.c.store.example"},
      {"https://store.example", host, "B_c", "https://store.example/B_c/k", "store.example"},
      {"http://127.0.0.1:7480", host, "b", "http://127.0.0.1:7480/b/k", "127.0.0.1:7480"},
      {"http://[::1]:7480", host, "b", "http://[::1]:7480/b/k", "[::1]:7480"},
      {"http://localhost", path, "t:b ", "http://localhost/t%3Ab%20/k", "localhost"},
  };
  for (const auto& each : cases) {
    const auto place = Endpoint(each.endpoint, each.addressing).place(each.bucket, "k");
    EXPECT_EQ(place.origin + place.path, each.url);
    EXPECT_EQ(place.host, each.host);
  }
  const Endpoint endpoint("https://s.example", host);
  EXPECT_EQ(endpoint.place("b", "").path, "/");
  EXPECT_EQ(endpoint.place("b", "/a/../\xC3\xA4 +%").path, "//a/../%C3%A4%20%2B%25");
  EXPECT_EQ(Endpoint("https://s.example", path).place("b", "").path, "/b");
}

TEST(EndpointTest, RefusesWhatIsNone) {
  for (const auto* const text : {"", "store.example", "ftp://s", "http://", "http://:80", "http://s:", "http://s:0",
                                 "http://s:65536", "http://s:1x", "http://s/path", "http://s//", "http://s?q",
                                 "http://user@s", "http://a b", "http://[x]", "http://[::1", "https://s\r\nx: y"})
    EXPECT_THROW(Endpoint(text, Addressing::Path), StoreFailure) << text;
  const Endpoint endpoint("http://s", Addressing::VirtualHost);
  for (const auto* const bucket : {"", ".", "..", "a/b"})
    EXPECT_THROW(endpoint.place(bucket, "k"), StoreFailure) << bucket;
  EXPECT_THROW(endpoint.place("b", std::string(1025, 'k')), StoreFailure);
  EXPECT_NO_THROW(endpoint.place("b", std::string(1024, 'k')));
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::client
