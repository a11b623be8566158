#include <foundation/storage/backend/s3/detail/wire/Encoding.h>

#include <foundation/storage/backend/s3/detail/wire/Request.h>

#include <gtest/gtest.h>

namespace foundation::storage::backend::s3::detail::wire {
namespace {

TEST(EncodingTest, EscapesAllButUnreservedBytes) {
  EXPECT_EQ(encode("azAZ09-._~"), "azAZ09-._~");
  EXPECT_EQ(encode(" +%/\u00e9!*'()@`{"), "%20%2B%25%2F%C3%A9%21%2A%27%28%29%40%60%7B");
  EXPECT_EQ(encodePath("/a b//../c+%2F"), "/a%20b//../c%2B%252F");
}

TEST(EncodingTest, DecodesEscapesOnceAndKeepsTheRest) {
  const std::pair<std::string, std::string> cases[] = {
      {"%2525", "%25"}, {"a+b", "a+b"}, {"%c3%A9", "\u00e9"}, {"%", "%"},       {"%4", "%4"},
      {"%4g", "%4g"},   {"%g4", "%g4"}, {"%%41", "%A"},       {"%41%4", "A%4"}, {"", ""},
  };
  for (const auto& [text, bytes] : cases)
    EXPECT_EQ(decode(text), bytes) << text;
}

TEST(EncodingTest, OrdersAQueryByItsEncodedNames) {
  // Unencoded, 'z' would go before U+00E9; as whole texts, "a-=" before "a=".
  EXPECT_EQ(encodeQuery({{"z", "1"}, {"\u00e9", "2"}, {"a-", "3"}, {"a", "5"}, {"a", "4 +"}, {"uploads", ""}}),
            "%C3%A9=2&a=4%20%2B&a=5&a-=3&uploads=&z=1");
  EXPECT_EQ(encodeQuery({}), "");
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::wire
