#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/PathView.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

namespace foundation::storage::provider {
namespace {

std::u16string text(PathView::StringView view) { return {view.begin(), view.end()}; }

TEST(PathView, TakesPathsApart) {
  const struct {
    const char16_t *path, *view;
    bool hasParent;
    const char16_t *parent, *filename, *segments;  // segments are shown with '|' after each
  } cases[] = {
      {u"/", u"/", false, u"", u"/", u""},
      {u"", u"", false, u"", u"", u""},
      {u"a", u"a", false, u"", u"a", u"a|"},
      {u"/a", u"/a", true, u"/", u"a", u"a|"},
      {u"/a/b", u"/a/b", true, u"/a", u"b", u"a|b|"},
      {u"ab/c/def", u"ab/c/def", true, u"ab/c", u"def", u"ab|c|def|"},
      {u"a//b", u"a//b", true, u"", u"b", u"a|"},
      {u"/ab//c", u"/ab//c", true, u"/a", u"c", u"ab|"},
      {u"//a", u"//a", true, u"/", u"a", u""},
      // A '/' at the end takes the code unit before it along.
      {u"/a/", u"/", false, u"", u"/", u""},
      {u"/abc/", u"/ab", true, u"/", u"ab", u"ab|"},
      {u"ab/", u"a", false, u"", u"a", u"a|"},
      {u"//", u"", false, u"", u"", u""},
      {u"/a/b/", u"/a/", true, u"/a", u"", u"a|"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(fl::i18n::to_string(row.path));
    const PathView view{PathView::StringView(row.path)};
    EXPECT_EQ(view.toStringCopy(), row.view);
    EXPECT_EQ(text(view.toStringView()), row.view);
    EXPECT_EQ(view.hasParent(), row.hasParent);
    EXPECT_EQ(view.getParentCopy(), row.parent);
    EXPECT_EQ(view.getFilenameCopy(), row.filename);
    std::u16string segments;
    for (const auto& segment : view)
      segments += text(segment) + u"|";
    EXPECT_EQ(segments, row.segments);
    EXPECT_EQ(view.begin() == view.end(), *row.segments == u'\0');
  }
}

// Read as a NUL-terminated string, not bounded by the view.
TEST(PathView, ReadsAFilenameViewToTheEndOfTheText) {
  const std::u16string path = u"/a/b/c/";
  EXPECT_EQ(text(PathView(PathView::StringView(path.data(), 4)).getFilenameStringView()), u"b/c/");
  EXPECT_EQ(PathView(PathView::StringView(path.data(), 4)).getFilenameCopy(), u"b");
  EXPECT_EQ(PathView(PathView::StringView(path.data(), 6)).getFilenameStringView().data(), path.data() + 5);
  EXPECT_EQ(text(PathView(PathView::StringView(path)).getFilenameStringView()), u"c/");
}

TEST(PathViewIterator, ComparesTheTextsOfSegments) {
  const std::u16string path = u"a/b/a";
  const PathView view{PathView::StringView(path)};
  const auto first = view.begin();
  auto walk = first;
  EXPECT_EQ(text(*walk++), u"a");
  EXPECT_NE(walk, first);
  EXPECT_EQ(++walk, first);
  EXPECT_EQ(walk->data(), path.data() + 4);
  EXPECT_EQ(++walk, view.cend());
  EXPECT_EQ(++walk, PathViewIterator());
  EXPECT_EQ(std::distance(view.cbegin(), view.cend()), 3);
}

}  // namespace
}  // namespace foundation::storage::provider
