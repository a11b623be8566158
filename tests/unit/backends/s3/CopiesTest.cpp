#include "StreamFixture.h"

#include <stdexcept>

namespace foundation::storage::backend::s3::detail::stream {
namespace {

using namespace testing::http;
using Operations = std::vector<std::string>;

using client::ObjectInfo;

class CopiesTest : public StreamTest {
 protected:
  /// Stores "a", with headers.
  ObjectInfo put(const std::string& bytes) const {
    client.put("a", bytes, client::Existing::Replace,
               {{"content-type", "text/x"}, {"x-amz-meta-who", "me"}, {std::string(partSizeHeader), "7"}});
    return *client.head("a");
  }

  const client::Client client = makeClient(mebi);
  const Target place = target(mebi);
  const Limits small{.smallestPart = 20, .largestCopy = 100, .copiedPart = 50};
};

TEST_F(CopiesTest, GoInOneRequestOrByParts) {
  const struct {
    std::size_t size;
    std::size_t parts;
  } cases[] = {{0, 0}, {1, 0}, {100, 0}, {101, 3}, {333, 7}};
  for (const auto& c : cases) {
    const auto source = put(sample(c.size));
    EXPECT_TRUE(copyObject(client, "a", source, "b", {}, small));
    EXPECT_TRUE(content("b") == sample(c.size)) << c.size;
    EXPECT_EQ(store.get("b")->kept.at("content-type"), "text/x") << c.size;
    EXPECT_EQ(store.get("b")->kept.at("x-amz-meta-who"), "me") << c.size;
    EXPECT_EQ(store.get("b")->kept.count(std::string(partSizeHeader)), c.parts == 0 ? 1u : 0u) << c.size;
  }
  EXPECT_EQ(store.count("CopyObject"), 3u);
  EXPECT_EQ(store.count("CompleteMultipartUpload"), 2u);
}

TEST_F(CopiesTest, EndWhenTheyAreToldTo) {
  for (const std::size_t size : {100u, 333u}) {
    const auto source = put(sample(size));
    int most = 0;
    for (bool isCopied = false; !isCopied; ++most) {
      ASSERT_LT(most, 1000);
      store.put("b", "old");
      int asked = 0;
      isCopied = copyObject(
          client, "a", source, "b", [&] { return asked++ < most; }, small);
      const auto found = content("b");  // the store may go on with a request that it has got
      EXPECT_TRUE(found == (isCopied ? sample(size) : "old") || (size == 100 && found == sample(size))) << most;
      EXPECT_EQ(store.uploads(), Operations{}) << most;
    }
    EXPECT_GE(most, size == 100 ? 2 : 8) << "asked once, or before each part";
  }
}

TEST_F(CopiesTest, PassOnWhatTheQuestionThrows) {
  const auto source = put(sample(333));
  int asked = 0;
  const auto proceed = [&] { return ++asked < 5 ? true : throw std::runtime_error("enough"); };
  EXPECT_THROW(copyObject(client, "a", source, "b", proceed, small), std::runtime_error);
  EXPECT_EQ(content("b"), "(nothing)");
  EXPECT_EQ(store.uploads(), Operations{});
}

TEST_F(CopiesTest, LeaveNothingWhenTheyFail) {
  const struct {
    const char* operation;
    std::size_t size;
  } cases[] = {{"CopyObject", 100}, {"UploadPartCopy", 333}, {"CompleteMultipartUpload", 333}};
  for (const auto& c : cases) {
    const auto source = put(sample(c.size));
    const auto copy = [&] { copyObject(client, "a", source, "b", {}, small); };
    store.failNext(c.operation, 1, failing(403, "AccessDenied"));
    EXPECT_EQ(failure(copy), ErrorCode::PermissionDenied) << c.operation;
    put(sample(c.size - 1));
    EXPECT_EQ(failure(copy), ErrorCode::ResourceInUse) << c.operation;
    EXPECT_EQ(content("b"), "(nothing)") << c.operation;
    EXPECT_EQ(store.uploads(), Operations{}) << c.operation;
  }
}

TEST_F(CopiesTest, ResizeToAnySize) {
  const auto bytes = sample(333);
  for (const std::size_t size : {0u, 1u, 19u, 20u, 200u, 332u, 333u, 334u, 5000u}) {
    const auto object = put(bytes);
    resizeObject(place, object, size, small);
    auto expected = bytes;
    expected.resize(size);
    EXPECT_TRUE(content() == expected) << size;
    EXPECT_EQ(store.get("a")->kept.at("content-type"), "text/x") << size;
    if (size == 0 || size == 333)
      continue;  // nothing is kept, or nothing happens
    store.put("a", "somebody else's");
    EXPECT_EQ(failure([&] { resizeObject(place, object, size, small); }), ErrorCode::ResourceInUse) << size;
    EXPECT_EQ(content(), "somebody else's") << size;
  }
  EXPECT_EQ(store.uploads(), Operations{});
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::stream
