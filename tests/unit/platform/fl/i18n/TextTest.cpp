#include <fl/i18n/Case.h>
#include <fl/i18n/Convert.h>
#include <fl/i18n/StreamOperator.h>

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>

namespace fl::i18n {
namespace {

TEST(Convert, DecodesUtf8AndKeepsEveryOtherByte) {
  const struct {
    std::string bytes;
    std::u16string text;
  } cases[] = {
      {"", u""},
      {"plain", u"plain"},
      {"a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", u"aä€😀"},
      {std::string("\0x", 2), std::u16string(u"\0x", 2)},
      {"\xef\xbf\xbf", u"\uffff"},
      {"\xf4\x8f\xbf\xbf", u"\xdbff\xdfff"},              // U+10FFFF
      {"\xff\xfe", u"\xdcff\xdcfe"},                      // never valid
      {"\x80x\xbf", u"\xdc80x\xdcbf"},                    // continuation without a lead
      {"\xc3", u"\xdcc3"},                                // cut off
      {"\xe2\x82", u"\xdce2\xdc82"},                      // cut off
      {"\xf0\x9f\x98!", u"\xdcf0\xdc9f\xdc98!"},          // interrupted
      {"\xc0\xaf", u"\xdcc0\xdcaf"},                      // overlong '/'
      {"\xc1\xbf", u"\xdcc1\xdcbf"},                      // overlong
      {"\xe0\x9f\xbf", u"\xdce0\xdc9f\xdcbf"},            // overlong
      {"\xf0\x8f\xbf\xbf", u"\xdcf0\xdc8f\xdcbf\xdcbf"},  // overlong
      {"\xed\xa0\x80", u"\xdced\xdca0\xdc80"},            // a surrogate
      {"\xf4\x90\x80\x80", u"\xdcf4\xdc90\xdc80\xdc80"},  // beyond U+10FFFF
      {"\xf5\x80\x80\x80", u"\xdcf5\xdc80\xdc80\xdc80"},
      {"\xc3\xc3\xa4", u"\xdcc3\x00e4"},  // the bad byte alone is kept as one
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(testing::PrintToString(row.bytes));
    EXPECT_EQ(to_ustring(row.bytes), row.text);
    EXPECT_EQ(to_string(row.text), row.bytes);
  }
}

TEST(Convert, EverySequenceOfThreeBytesSurvives) {
  const unsigned interesting[] = {0x00, 0x2f, 0x7f, 0x80, 0x9f, 0xa0, 0xbf, 0xc1, 0xc2, 0xdf,
                                  0xe0, 0xe1, 0xed, 0xef, 0xf0, 0xf1, 0xf4, 0xf5, 0xff};
  for (unsigned first = 0; first < 256; ++first)
    for (const unsigned second : interesting)
      for (const unsigned third : interesting) {
        const std::string bytes{static_cast<char>(first), static_cast<char>(second), static_cast<char>(third)};
        ASSERT_EQ(to_string(to_ustring(bytes)), bytes) << testing::PrintToString(bytes);
      }
}

TEST(Convert, SpellsOtherLoneSurrogatesInThreeBytes) {
  EXPECT_EQ(to_string(u"\xd800"), "\xed\xa0\x80");
  EXPECT_EQ(to_string(u"x\xdfff"), "x\xed\xbf\xbf");
  EXPECT_EQ(to_string(u"\xd83d"
                      u"a"),
            "\xed\xa0\xbd"
            "a");
}

TEST(Case, LowersCodePointsOneByOne) {
  const struct {
    std::u16string text;
    std::u16string lower;
  } cases[] = {
      {u"", u""},
      {u"ABC-xyz_019[", u"abc-xyz_019["},
      {u"ÄÖÜß", u"äöüß"},
      {u"ΟΔΟΣ", u"οδοσ"},
      {u"\U00010400", u"\U00010428"},  // a letter beyond U+FFFF
      {u"A\xd801", u"a\xd801"},        // a lone surrogate is no letter
      {u"\xdc00\xd801Z", u"\xdc00\xd801z"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(detail::transform(row.text, to_lower()), row.lower) << to_string(row.text);
}

TEST(StreamOperator, WritesUtf8InTheStreamsFormat) {
  using i18n::operator<<;
  std::ostringstream out;
  out << std::setw(6) << std::setfill('.') << std::u16string_view(u"ä€") << std::u16string(u"|");
  EXPECT_EQ(out.str(), ".ä€|");
}

}  // namespace
}  // namespace fl::i18n
