#include <foundation/network/IRISyntaxException.h>
#include <foundation/storage/provider/FilteringURL.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/provider/LogText.h>

#include <fl/i18n/Convert.h>

#include <gtest/gtest.h>

#include <string>

namespace foundation::storage::provider {
namespace {

using fl::i18n::to_string;

TEST(FilteringURL, StripsFiltersFromSchemesAndTexts) {
  const struct {
    std::u16string text, asScheme, asURL;
  } cases[] = {
      {u"", u"", u""},
      {u"file", u"file", u"file"},
      {u"f1+f2+file", u"file", u"file"},
      {u"a+", u"", u""},
      {u"+file", u"file", u"file"},
      {u"f1+file:///a+b", u"b", u"file:///a+b"},
      {u"file:///a+b", u"b", u"file:///a+b"},
      {u"a+b+:x", u":x", u":x"},
      {u":a+b", u"b", u":a+b"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(getPhysicalPartFromFilteringScheme(row.text), row.asScheme) << to_string(row.text);
    EXPECT_EQ(getPhysicalURLFromFilteringURL(row.text), row.asURL) << to_string(row.text);
  }
}

TEST(FilteringURL, FindsLocationsOfOnePlaceEquivalent) {
  const struct {
    const char16_t *a, *b;
    bool equivalent;
  } cases[] = {
      {u"file:///a", u"file:///a", true},
      {u"file:///a", u"f1+f2+file:///a", true},
      {u"file:/a", u"file:///a", true},
      {u"file:///a", u"file://h/a", false},
      {u"file://h/a", u"f+file://h/a", true},
      {u"s://h/a", u"S://h/a", false},
      {u"file:///a", u"file:///a/", false},
      {u"file:///a", u"file:///./a", false},
      {u"file:///%61", u"file:///a", true},  // paths are compared decoded
      {u"file:///a.x", u"c:file:///a.x!/e", true},
      {u"f+file:///a.x", u"c:d:file:///a.x!/b!/e", true},
      {u"file:///b.x", u"c:file:///a.x!/e", false},
      {u"c:file:///a!/e", u"c:file:///a!/e", true},
      {u"c:file:///a!/e", u"c:file:///a!/other", false},
      {u"c:file:///a!/e", u"f+c:file:///a!/e", false},  // two containers are compared whole
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(to_string(row.a) + std::string(" and ") + to_string(row.b));
    EXPECT_EQ(locationsAreEquivalent(StorageIRI(row.a), StorageIRI(row.b)), row.equivalent);
    EXPECT_EQ(locationsAreEquivalent(StorageIRI(row.b), StorageIRI(row.a)), row.equivalent);
  }
  const auto local = toStorageIRI(u"file", fl::filesystem::upath(u"/a b"));
  EXPECT_TRUE(locationsAreEquivalent(local, StorageIRI(u"f+file:///a%20b")));
  EXPECT_THROW(locationsAreEquivalent(StorageIRI(u"f+1s:///a"), StorageIRI(u"s:///a")), network::IRISyntaxException);
}

TEST(LogText, ShowsNoPasswords) {
  const struct {
    const char16_t* location;
    const char* text;
  } cases[] = {
      {u"s://ann:se@h:1/a@b:c", "s://ann:***@h:1/a@b:c"},
      {u"s://ann:secret@h:1/a%0Ab?x:y@z", "s://ann:***@h:1/a%0Ab?x:y@z"},
      {u"s://ann@h/ä", "s://ann@h/ä"},
      {u"s://:@h/", "s://:***@h/"},
      {u"zip:zip:s://a:b:c@h/x!/in%21!/y", "zip:zip:s://a:***@h/x!/in%21!/y"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(toLogText(StorageIRI(row.location)), row.text);
}

}  // namespace
}  // namespace foundation::storage::provider
