#include <foundation/storage/backend/s3/detail/wire/Digest.h>

#include <gtest/gtest.h>

#include <utility>

namespace foundation::storage::backend::s3::detail::wire {
namespace {

TEST(DigestTest, WritesBase64) {
  // RFC 4648, section 10.
  const std::pair<std::string, std::string> cases[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}};
  for (const auto& [bytes, text] : cases)
    EXPECT_EQ(base64(bytes), text) << bytes;
}

TEST(DigestTest, HashesPieceByPieceAndThenAnew) {
  Md5Hasher hasher;
  hasher.add("message ");
  auto moved = std::move(hasher);
  moved.add("digest");
  const auto digest = moved.finish();
  EXPECT_EQ(hex(bytesOf(digest)), "f96b697d7cb7938d525a2f31aaf161d0");  // RFC 1321, appendix A.5
  EXPECT_EQ(digest, md5("message digest"));
  EXPECT_EQ(moved.finish(), md5(""));
  moved.add("abc");
  EXPECT_EQ(moved.finish(), md5("abc"));
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::wire
