#include <foundation/storage/testing/detail/Check.h>

namespace foundation::storage::testing::detail {
namespace {

void moveFile(Store& s, const char16_t* from, const char16_t* to,
              ReplacementPolicy policy = ReplacementPolicy::Overwrite) {
  s.item(from).moveFile(s.item(to).getLocation(), policy);
}

void moveFolder(Store& s, const char16_t* from, const char16_t* to,
                ReplacementPolicy policy = ReplacementPolicy::Overwrite) {
  s.item(from).moveFolder(s.item(to).getLocation(), policy);
}

constexpr ReplacementPolicy keeping[] = {ReplacementPolicy::Preserve, ReplacementPolicy::NoClobber};
constexpr ReplacementPolicy overwriting[] = {ReplacementPolicy::Overwrite, ReplacementPolicy::Clobber};

}  // namespace

CheckGroup moveChecks() {
  return {"Move",
          {Capability::Write},
          {
              {"AFileToAnotherName",
               [](Store& s) {
                 s.fill({{u"a", "content"}});
                 moveFile(s, u"a", u"b");
                 EXPECT_EQ(s.names(), Names{u"b"});
                 EXPECT_EQ(s.content(u"b"), "content");
               }},
              {"AFileWhereNothingIsGoesByNoPolicy",
               [](Store& s) {
                 for (const auto policy : {ReplacementPolicy::Preserve, ReplacementPolicy::Overwrite,
                                           ReplacementPolicy::Clobber, ReplacementPolicy::NoClobber}) {
                   s.fill({{u"a", "content"}});
                   moveFile(s, u"a", u"b", policy);
                   EXPECT_EQ(s.names(), Names{u"b"});
                 }
               }},
              {"AFileIntoAnotherFolder",
               [](Store& s) {
                 s.fill({{u"a", "content"}, {u"b/", ""}});
                 moveFile(s, u"a", u"b/c");
                 EXPECT_EQ(s.names(), Names{u"b"});
                 EXPECT_EQ(s.content(u"b/c"), "content");
               }},
              {"ABigFile",
               [](Store& s) {
                 s.fill({{u"a", sample(severalBlocks)}});
                 moveFile(s, u"a", u"b");
                 EXPECT_TRUE(s.content(u"b") == sample(severalBlocks));
               }},
              {"AFileOverAFile",
               [](Store& s) {
                 for (const auto policy : overwriting) {
                   s.fill({{u"a", "content"}, {u"b", "a longer old content"}});
                   moveFile(s, u"a", u"b", policy);
                   EXPECT_EQ(s.names(), Names{u"b"});
                   EXPECT_EQ(s.content(u"b"), "content");
                 }
               }},
              {"AFileKeepsWhatThePolicyKeeps",
               [](Store& s) {
                 s.fill({{u"a", "content"}, {u"b", "old"}});
                 for (const auto policy : keeping)
                   EXPECT_TRUE(refuses(ErrorCode::ResourceAlreadyExists, s.item(u"b"),
                                       [&] { moveFile(s, u"a", u"b", policy); }));
                 EXPECT_EQ(s.content(u"a"), "content");
                 EXPECT_EQ(s.content(u"b"), "old");
               }},
              {"AFileOntoItselfChangesNothing",
               [](Store& s) {
                 s.fill({{u"a", "content"}});
                 moveFile(s, u"a", u"a");
                 EXPECT_EQ(s.content(u"a"), "content");
               }},
              {"AMissingFileIsRefused",
               [](Store& s) {
                 s.fill({{u"b", "old"}});
                 EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"), [&] { moveFile(s, u"a", u"b"); }));
                 EXPECT_EQ(s.content(u"b"), "old");
               }},
              {"AFolderIsNoFile",
               [](Store& s) {
                 s.fill({{u"a/x", "x"}});
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"a"), [&] { moveFile(s, u"a", u"b"); }));
                 EXPECT_EQ(s.content(u"a/x"), "x");
               }},
              {"AFileOverAFolderIsRefused",
               [](Store& s) {
                 s.fill({{u"a", "content"}, {u"b/", ""}, {u"c/x", "x"}});
                 for (const auto* folder : {u"b", u"c"})
                   EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(folder), [&] { moveFile(s, u"a", folder); }));
                 EXPECT_EQ(s.names(), (Names{u"a", u"b", u"c"}));
               }},
              {"AFileIntoAMissingFolderIsRefused",
               [](Store& s) {
                 s.fill({{u"a", "content"}});
                 EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"b/c"), [&] { moveFile(s, u"a", u"b/c"); }));
                 EXPECT_EQ(s.content(u"a"), "content");
               }},
              {"AFileBelowAFileIsRefused",
               [](Store& s) {
                 s.fill({{u"a", "content"}, {u"b", "old"}});
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"b/c"), [&] { moveFile(s, u"a", u"b/c"); }));
                 EXPECT_EQ(s.content(u"a"), "content");
               }},
              {"AFolderWithAllItHolds",
               [](Store& s) {
                 s.fill({{u"a/x", "1"}, {u"a/b/y", "2"}});
                 moveFolder(s, u"a", u"c");
                 EXPECT_EQ(s.names(), Names{u"c"});
                 EXPECT_EQ(s.content(u"c/x"), "1");
                 EXPECT_EQ(s.content(u"c/b/y"), "2");
               }},
              {"AFolderIntoAnotherFolder",
               [](Store& s) {
                 s.fill({{u"a/x", "1"}, {u"b/", ""}});
                 moveFolder(s, u"a", u"b/a");
                 EXPECT_EQ(s.content(u"b/a/x"), "1");
                 EXPECT_EQ(s.names(), Names{u"b"});
               }},
              {"AFolderIntoItselfIsRefused",
               [](Store& s) {
                 s.fill({{u"a/b/x", "1"}});
                 for (const auto* below : {u"a/c", u"a/b/c", u"a/b"})
                   EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(below), [&] { moveFolder(s, u"a", below); }));
                 EXPECT_EQ(s.content(u"a/b/x"), "1");
               }},
              {"AFolderIntoItselfByAnotherTextIsRefused",
               [](Store& s) {
                 s.fill({{u"a/x", "1"}, {u"b/", ""}});
                 for (const auto* below : {u"b/../a/c", u"./a/c"})
                   EXPECT_ANY_THROW(moveFolder(s, u"a", below));
                 EXPECT_EQ(s.content(u"a/x"), "1");
                 EXPECT_EQ(s.names(u"a"), Names{u"x"});
               }},
              {"AFileOntoItselfByAnotherTextChangesNothing",
               [](Store& s) {
                 s.fill({{u"a", "content"}, {u"b/", ""}});
                 moveFile(s, u"a", u"b/../a");
                 EXPECT_EQ(s.content(u"a"), "content");
               }},
              {"AFolderOverAnEmptyOne",
               [](Store& s) {
                 for (const auto policy : overwriting) {
                   s.fill({{u"a/x", "1"}, {u"b/", ""}});
                   moveFolder(s, u"a", u"b", policy);
                   EXPECT_EQ(s.names(), Names{u"b"});
                   EXPECT_EQ(s.content(u"b/x"), "1");
                 }
               }},
              {"AFolderOverOneThatIsNotEmptyIsRefused",
               [](Store& s) {
                 s.fill({{u"a/x", "1"}, {u"b/y", "2"}});
                 for (const auto policy : overwriting)
                   EXPECT_TRUE(
                       refuses(ErrorCode::FolderNotEmpty, s.item(u"b"), [&] { moveFolder(s, u"a", u"b", policy); }));
                 EXPECT_EQ(s.content(u"a/x"), "1");
                 EXPECT_EQ(s.content(u"b/y"), "2");
               }},
              {"AFolderKeepsWhatThePolicyKeeps",
               [](Store& s) {
                 s.fill({{u"a/x", "1"}, {u"b/", ""}});
                 for (const auto policy : keeping)
                   EXPECT_TRUE(refuses(ErrorCode::ResourceAlreadyExists, s.item(u"b"),
                                       [&] { moveFolder(s, u"a", u"b", policy); }));
                 EXPECT_EQ(s.content(u"a/x"), "1");
               }},
              {"AFolderOverAFileIsRefused",
               [](Store& s) {
                 s.fill({{u"a/x", "1"}, {u"b", "old"}});
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"b"), [&] { moveFolder(s, u"a", u"b"); }));
                 EXPECT_EQ(s.content(u"b"), "old");
               }},
              {"AFolderOntoItselfChangesNothing",
               [](Store& s) {
                 s.fill({{u"a/x", "1"}});
                 moveFolder(s, u"a", u"a");
                 EXPECT_EQ(s.content(u"a/x"), "1");
               }},
              {"AMissingFolderIsRefused",
               [](Store& s) {
                 EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"), [&] { moveFolder(s, u"a", u"b"); }));
               }},
              {"AFileIsNoFolder",
               [](Store& s) {
                 s.fill({{u"a", "content"}});
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"a"), [&] { moveFolder(s, u"a", u"b"); }));
                 EXPECT_EQ(s.content(u"a"), "content");
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
