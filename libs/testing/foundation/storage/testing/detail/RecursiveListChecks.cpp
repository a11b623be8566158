#include <foundation/storage/testing/detail/Check.h>

#include <set>

namespace foundation::storage::testing::detail {
namespace {

const Contents tree{{u"a/b/c/deep", "4444"}, {u"a/b/file", "22"}, {u"a/empty/", ""}, {u"top", "1"}};
const Names treeNames{u"a", u"a/b", u"a/b/c", u"a/b/c/deep", u"a/b/file", u"a/empty", u"top"};

}  // namespace

CheckGroup recursiveListChecks() {
  return {"RecursiveList",
          {Capability::RecursiveListing},
          {
              {"AWholeTreeByPaths",
               [](Store& s) {
                 s.fill(tree);
                 EXPECT_EQ(namesIn(s.folder().listAllRecursive({})), treeNames);
               }},
              {"NamesOfAWholeTree",
               [](Store& s) {
                 s.fill(tree);
                 EXPECT_EQ(namesIn(s.folder().listAllRecursiveNamesOnly({})), treeNames);
               }},
              {"AFolderComesBeforeWhatItHolds",
               [](Store& s) {
                 s.fill(tree);
                 std::set<std::u16string> seen;
                 for (const auto listing = s.folder().listAllRecursiveNamesOnly({}); listing->hasNext();) {
                   listing->next();
                   const auto name = listing->current().getName();
                   const auto slash = name.rfind(u'/');
                   EXPECT_TRUE(slash == std::u16string::npos || seen.contains(name.substr(0, slash)))
                       << "of its parent";
                   seen.insert(name);
                 }
                 EXPECT_EQ(seen.size(), treeNames.size());
               }},
              {"EachNameMakesALocation",
               [](Store& s) {
                 s.fill(tree);
                 for (const auto listing = s.folder().listAllRecursive({}); listing->hasNext();) {
                   listing->next();
                   const auto entry = listing->current();
                   const auto item = s.item(entry.getName());
                   EXPECT_EQ(item.fileExists(), entry.isFile());
                   EXPECT_EQ(item.folderExists(), !entry.isFile());
                 }
               }},
              {"ATreeInTheTree",
               [](Store& s) {
                 s.fill(tree);
                 EXPECT_EQ(namesIn(s.item(u"a/b").listAllRecursive({})), (Names{u"c", u"c/deep", u"file"}));
               }},
              {"AnEmptyFolder",
               [](Store& s) {
                 s.fill({});
                 EXPECT_FALSE(s.folder().listAllRecursive({})->hasNext());
               }},
              {"BeginsAnew",
               [](Store& s) {
                 s.fill(tree);
                 auto listing = s.folder().listAllRecursiveNamesOnly({});
                 while (listing->hasNext())
                   listing->next();
                 listing->reset();
                 EXPECT_EQ(namesIn(std::move(listing)), treeNames);
               }},
              {"AMissingFolderIsRefused",
               [](Store& s) {
                 EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"),
                                     [&] { s.item(u"a").listAllRecursive({})->hasNext(); }));
               }},
              {"AFileIsRefused",
               [](Store& s) {
                 s.fill({{u"a", "1"}});
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"a"),
                                     [&] { s.item(u"a").listAllRecursive({})->hasNext(); }));
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
