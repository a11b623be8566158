#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/support/EntryList.h>
#include <foundation/storage/backend/support/FilteredListing.h>
#include <foundation/storage/backend/support/Wildcard.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace foundation::storage::backend::support {
namespace {

using provider::CaseModifier;

TEST(WildcardTest, MatchesByTheGrammar) {
  const struct {
    const char16_t* pattern;
    std::vector<std::u16string> matching;
    std::vector<std::u16string> others;
  } cases[] = {
      {u"", {u"", u"a/"}, {u"a"}},
      {u"*", {u"", u"a", u".a", u"a/b"}, {}},
      {u"?", {u"a", u"\U0001F600", u"\xD83D", u"\xDE00", u"a/b"}, {u"", u"ab", u"\xDE00\xD83D"}},
      {u"*.txt", {u".txt", u"a.txt", u"a.txt.txt", u"x.y/a.txt"}, {u"a.txt.", u"a.TXT", u"a.txt/b"}},
      {u"a*b*c", {u"abc", u"a-b-b-c-c"}, {u"ab", u"acb", u"abcd"}},
      {u"**a?", {u"ab", u"aab"}, {u"a", u"aabb"}},
      {u"[abc]", {u"a", u"c"}, {u"", u"d", u"ab"}},
      {u"[a-cx-z]", {u"b", u"y"}, {u"d", u"-"}},
      {u"[!a-c]", {u"d", u"!", u"\U0001F600"}, {u"", u"b", u"dd"}},
      {u"[]a]", {u"]", u"a"}, {u"[", u"]a]"}},
      {u"[!]a]", {u"b"}, {u"]", u"a"}},
      {u"[-a]", {u"-", u"a"}, {u"b"}},
      {u"[a-]", {u"-", u"a"}, {u"b", u"]"}},
      {u"[!-]", {u"a"}, {u"-"}},
      {u"[z-a]", {}, {u"a", u"m", u"z", u"-"}},
      {u"[a!]", {u"!", u"a"}, {u"b"}},
      {u"[*]?[?]", {u"*x?"}, {u"xx?", u"*xx"}},
      {u"[[]", {u"["}, {u"[[]"}},
      {u"a[b", {u"a[b"}, {u"ab"}},
      {u"[", {u"["}, {u""}},
      {u"[]", {u"[]"}, {u"]"}},
      {u"[!]", {u"[!]"}, {u"a"}},
      {u"[*", {u"[", u"[x"}, {u"x"}},
      {u"[\U0001F600-\U0001F602]", {u"\U0001F601"}, {u"\U0001F603", u"\xD83D"}},
      {u"[\xDC80-\xDCFF]", {u"\xDC9A"}, {u"\x9A", u"\U0001F600"}},
      {u"a/b", {}, {u"a/b", u"b"}},
  };
  for (const auto& row : cases) {
    const Wildcard wildcard(row.pattern, CaseModifier::Sensitive);
    for (const auto& name : row.matching)
      EXPECT_TRUE(wildcard.matches(name)) << fl::i18n::to_string(row.pattern) << " " << fl::i18n::to_string(name);
    for (const auto& name : row.others)
      EXPECT_FALSE(wildcard.matches(name)) << fl::i18n::to_string(row.pattern) << " " << fl::i18n::to_string(name);
  }
}

TEST(WildcardTest, FoldsCaseWhereItIsToldTo) {
  EXPECT_TRUE(Wildcard(u"\u00C4*[A-C]", CaseModifier::InSensitive).matches(u"D/\u00E4xB"));
  EXPECT_TRUE(Wildcard(u"\u00E4*[!a-c]", CaseModifier::InSensitive).matches(u"\u00C4D"));
  EXPECT_FALSE(Wildcard(u"*[!a-c]", CaseModifier::InSensitive).matches(u"B"));
  EXPECT_FALSE(Wildcard(u"a", CaseModifier::None).matches(u"A"));
}

TEST(WildcardTest, TakesNoExponentialTime) {
  std::u16string pattern;
  for (int i = 0; i < 500; ++i)
    pattern += u"*a";
  const std::u16string name(10'000, u'a');
  EXPECT_TRUE(Wildcard(pattern, CaseModifier::Sensitive).matches(name));
  EXPECT_FALSE(Wildcard(pattern + u"b", CaseModifier::Sensitive).matches(name));
  const std::u16string open(100'000, u'[');
  EXPECT_TRUE(Wildcard(open, CaseModifier::Sensitive).matches(open));
}

TEST(ListingsTest, LookAheadAndStartAnew) {
  using provider::FolderEntry;
  std::vector<std::u16string> names{u"a.txt", u"b", u"c/d.txt"};
  const auto list = [&names] {
    if (names.empty())
      throw std::runtime_error("gone");
    std::vector<FolderEntry> entries;
    for (const auto& name : names)
      entries.emplace_back(name, FolderEntry::EntryType::File);
    return entries;
  };
  FilteredListing entries(std::make_unique<EntryList>(list), Wildcard(u"*.txt", CaseModifier::Sensitive));
  EXPECT_THROW(entries.current(), std::logic_error);
  entries.next();
  EXPECT_TRUE(entries.hasNext());  // has looked beyond "b", and the current entry is still the first
  EXPECT_EQ(entries.current().getName(), u"a.txt");
  entries.next();
  EXPECT_EQ(entries.current().getName(), u"c/d.txt");
  EXPECT_FALSE(entries.hasNext());
  entries.next();
  EXPECT_THROW(entries.current(), std::logic_error);
  names = {u"e.txt"};
  entries.reset();
  EXPECT_THROW(entries.current(), std::logic_error);
  entries.next();
  EXPECT_EQ(entries.current().getName(), u"e.txt");
  names.clear();
  EXPECT_THROW(entries.reset(), std::runtime_error);
  EXPECT_EQ(entries.current().getName(), u"e.txt");
}

}  // namespace
}  // namespace foundation::storage::backend::support
