#include <foundation/storage/backend/s3/detail/wire/Digest.h>

#include <gtest/gtest.h>

#include <utility>

namespace foundation::storage::backend::s3::detail::wire {
namespace {

template <class Digest>
std::string hexOf(const Digest& digest) {
  return hex(bytesOf(digest));
}

TEST(DigestTest, ComputesPublishedValues) {
  // FIPS 180-2, appendix B.1; RFC 1321, appendix A.5; RFC 4231, test case 2.
  EXPECT_EQ(hexOf(sha256("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(hexOf(md5("message digest")), "f96b697d7cb7938d525a2f31aaf161d0");
  EXPECT_EQ(hexOf(hmacSha256("Jefe", "what do ya want for nothing?")),
            "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
  EXPECT_EQ(hexOf(sha256({})), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855") << "no bytes at all";
}

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
  EXPECT_EQ(moved.finish(), md5("message digest"));
  EXPECT_EQ(moved.finish(), md5(""));
  moved.add("abc");
  EXPECT_EQ(moved.finish(), md5("abc"));
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::wire
