#include <foundation/storage/testing/detail/Check.h>

namespace foundation::storage::testing::detail {
namespace {

const Contents names{{u"a.txt", ""},   {u"b.txt", ""}, {u"c.dat", ""},      {u".hidden", ""},          {u"abc", ""},
                     {u"x[1].md", ""}, {u"ä.txt", ""}, {u"\U0001F600", ""}, {u"sub.txt/inner.txt", ""}};

void expectMatches(Store& s, const char16_t* wildcard, const Names& expected) {
  s.fill(names);
  EXPECT_EQ(namesIn(s.folder().listAll(wildcard)), expected);
}

}  // namespace

CheckGroup wildcardChecks() {
  return {"Wildcard",
          {Capability::Wildcards},
          {
              {"StarIsAnyRun",
               [](Store& s) {
                 expectMatches(s, u"*.txt", {u"a.txt", u"b.txt", u"sub.txt", u"ä.txt"});
               }},
              {"StarIsAlsoNothing", [](Store& s) { expectMatches(s, u"*abc*", {u"abc"}); }},
              {"StarAloneIsEverything",
               [](Store& s) {
                 s.fill(names);
                 EXPECT_EQ(namesIn(s.folder().listAll(u"*")), s.names());
                 EXPECT_EQ(namesIn(s.folder().listAll(u"**")), s.names());
               }},
              {"QuestionMarkIsOneCharacter",
               [](Store& s) {
                 expectMatches(s, u"?.txt", {u"a.txt", u"b.txt", u"ä.txt"});
               }},
              {"QuestionMarkIsOneCharacterOfAnyPlane", [](Store& s) { expectMatches(s, u"?", {u"\U0001F600"}); }},
              {"ARangeIsOneOfIts",
               [](Store& s) {
                 expectMatches(s, u"[b-c].*", {u"b.txt", u"c.dat"});
               }},
              {"ASetIsOneOfIts",
               [](Store& s) {
                 expectMatches(s, u"[ac].*", {u"a.txt", u"c.dat"});
               }},
              {"ANegatedSetIsOneOfTheOthers",
               [](Store& s) {
                 expectMatches(s, u"[!a-b].*", {u"c.dat", u"ä.txt"});
               }},
              {"ABracketInASet", [](Store& s) { expectMatches(s, u"x[[]1].md", {u"x[1].md"}); }},
              {"OrdinaryTextIsItself", [](Store& s) { expectMatches(s, u"abc", {u"abc"}); }},
              {"ADotIsNothingSpecial", [](Store& s) { expectMatches(s, u"*hidden", {u".hidden"}); }},
              {"TheWholeNameHasToMatch", [](Store& s) { expectMatches(s, u"ab", {}); }},
              {"NothingMatches", [](Store& s) { expectMatches(s, u"*.none", {}); }},
              {"InEveryPlainListing",
               [](Store& s) {
                 s.fill(names);
                 const Names files{u"a.txt", u"b.txt", u"ä.txt"};
                 const Names all{u"a.txt", u"b.txt", u"sub.txt", u"ä.txt"};
                 EXPECT_EQ(namesIn(s.folder().listFiles(u"*.txt")), files);
                 EXPECT_EQ(namesIn(s.folder().listFolders(u"*.txt")), Names{u"sub.txt"});
                 EXPECT_EQ(namesIn(s.folder().listAllNamesOnly(u"*.txt")), all);
                 EXPECT_EQ(namesIn(s.folder().listFilesNamesOnly(u"*.txt")), files);
                 EXPECT_EQ(namesIn(s.folder().listFoldersNamesOnly(u"*.txt")), Names{u"sub.txt"});
               }},
              {"GoesByTheCaseOfNames",
               [](Store& s) {
                 s.fill(names);
                 EXPECT_EQ(namesIn(s.folder().listAll(u"ABC")).empty(),
                           s.folder().getFilenameSensitivity().isCaseSensitive);
               }},
              {"ManyStarsAreNoBurden",
               [](Store& s) {
                 s.fill({{std::u16string(200, u'a'), ""}});
                 EXPECT_EQ(namesIn(s.folder().listAll(u"*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*b")), Names{});
               }},
              {"BeginsAnew",
               [](Store& s) {
                 s.fill(names);
                 const auto listing = s.folder().listAll(u"?.dat");
                 for (int round = 0; round < 2; ++round) {
                   ASSERT_TRUE(listing->hasNext());
                   listing->next();
                   EXPECT_EQ(listing->current().getName(), u"c.dat");
                   EXPECT_FALSE(listing->hasNext());
                   EXPECT_EQ(listing->current().getName(), u"c.dat");
                   listing->reset();
                 }
               }},
              {"RecursivelyGoesByTheLastName",
               [](Store& s) {
                 s.fill({{u"a/b/x.txt", ""}, {u"a/y.dat", ""}, {u"z.txt", ""}, {u"w.txt/v", ""}});
                 const Names expected{u"a/b/x.txt", u"w.txt", u"z.txt"};
                 EXPECT_EQ(namesIn(s.folder().listAllRecursive(u"*.txt")), expected);
                 EXPECT_EQ(namesIn(s.folder().listAllRecursiveNamesOnly(u"*.txt")), expected);
                 EXPECT_EQ(namesIn(s.folder().listAllRecursive(u"a*")), Names{u"a"});
               },
               {Capability::RecursiveListing}},
          }};
}

}  // namespace foundation::storage::testing::detail
