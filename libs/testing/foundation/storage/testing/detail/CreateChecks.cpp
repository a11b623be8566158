#include <foundation/storage/testing/detail/Check.h>

namespace foundation::storage::testing::detail {

CheckGroup createChecks() {
  return {
      "Create",
      {Capability::Write},
      {
          {"AFileIsEmpty",
           [](Store& s) {
             s.item(u"a").createFile();
             EXPECT_TRUE(s.item(u"a").fileExists());
             EXPECT_EQ(s.content(u"a"), "");
           }},
          {"AFileShowsInTheListing",
           [](Store& s) {
             s.item(u"a").createFile();
             EXPECT_EQ(s.names(), Names{u"a"});
           }},
          {"AFileIsRefusedWhereAFileIs",
           [](Store& s) {
             s.fill({{u"a", "old"}});
             EXPECT_TRUE(refuses(ErrorCode::ResourceAlreadyExists, s.item(u"a"), [&] { s.item(u"a").createFile(); }));
             EXPECT_EQ(s.content(u"a"), "old");
           }},
          {"AFileIsRefusedWhereAFolderIs",
           [](Store& s) {
             s.fill({{u"a/b", "old"}});
             EXPECT_TRUE(refuses(ErrorCode::ResourceAlreadyExists, s.item(u"a"), [&] { s.item(u"a").createFile(); }));
             EXPECT_EQ(s.content(u"a/b"), "old");
           }},
          {"AFileIsRefusedInAMissingFolder",
           [](Store& s) {
             EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a/b"), [&] { s.item(u"a/b").createFile(); }));
             EXPECT_EQ(s.names(), Names{});
           }},
          {"AFileIsRefusedBelowAFile",
           [](Store& s) {
             s.fill({{u"a", "old"}});
             EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"a/b"), [&] { s.item(u"a/b").createFile(); }));
             EXPECT_EQ(s.content(u"a"), "old");
           }},
          {"AFolderIsEmpty",
           [](Store& s) {
             s.item(u"a").createFolder();
             EXPECT_TRUE(s.item(u"a").folderExists());
             EXPECT_EQ(s.names(u"a"), Names{});
           }},
          {"AFolderShowsInTheListing",
           [](Store& s) {
             s.item(u"a").createFolder();
             EXPECT_EQ(s.names(), Names{u"a"});
           }},
          {"AFolderWithASlashAfterIt",
           [](Store& s) {
             s.item(u"a/").createFolder();
             EXPECT_TRUE(s.item(u"a").folderExists());
           }},
          {"AFolderIsRefusedWhereAFolderIs",
           [](Store& s) {
             s.fill({{u"a/b", "old"}});
             EXPECT_TRUE(refuses(ErrorCode::ResourceAlreadyExists, s.item(u"a"), [&] { s.item(u"a").createFolder(); }));
             EXPECT_EQ(s.content(u"a/b"), "old");
           }},
          {"AFolderIsRefusedWhereAFileIs",
           [](Store& s) {
             s.fill({{u"a", "old"}});
             EXPECT_TRUE(refuses(ErrorCode::ResourceAlreadyExists, s.item(u"a"), [&] { s.item(u"a").createFolder(); }));
             EXPECT_EQ(s.content(u"a"), "old");
           }},
          {"AFolderIsRefusedInAMissingFolder",
           [](Store& s) {
             EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a/b"), [&] { s.item(u"a/b").createFolder(); }));
           }},
          {"AFolderIsRefusedBelowAFile",
           [](Store& s) {
             s.fill({{u"a", "old"}});
             EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"a/b"), [&] { s.item(u"a/b").createFolder(); }));
           }},
          {"AllMissingFolders",
           [](Store& s) {
             s.item(u"a/b/c").createFolderRecursive();
             EXPECT_EQ(s.names(), Names{u"a"});
             EXPECT_EQ(s.names(u"a"), Names{u"b"});
             EXPECT_EQ(s.names(u"a/b"), Names{u"c"});
             EXPECT_EQ(s.names(u"a/b/c"), Names{});
           }},
          {"OnlyTheMissingFolders",
           [](Store& s) {
             s.fill({{u"a/b", "old"}});
             s.item(u"a/c").createFolderRecursive();
             EXPECT_EQ(s.names(u"a"), (Names{u"b", u"c"}));
           }},
          {"AllMissingFoldersIsRefusedWhereTheFolderIs",
           [](Store& s) {
             s.fill({{u"a/b/", ""}});
             EXPECT_TRUE(refuses(ErrorCode::ResourceAlreadyExists, s.item(u"a/b"),
                                 [&] { s.item(u"a/b").createFolderRecursive(); }));
           }},
          {"AllMissingFoldersIsRefusedWhereAFileIs",
           [](Store& s) {
             s.fill({{u"a/b", "old"}});
             EXPECT_TRUE(refuses(ErrorCode::ResourceAlreadyExists, s.item(u"a/b"),
                                 [&] { s.item(u"a/b").createFolderRecursive(); }));
             EXPECT_EQ(s.content(u"a/b"), "old");
           }},
          {"AllMissingFoldersIsRefusedBelowAFile",
           [](Store& s) {
             s.fill({{u"a", "old"}});
             EXPECT_ANY_THROW(s.item(u"a/b/c").createFolderRecursive());
             EXPECT_EQ(s.content(u"a"), "old");
           }},
          {"FoldersManyLevelsDeep",
           [](Store& s) {
             std::u16string path;
             for (int level = 0; level < 50; ++level)
               path += u"level/";
             s.item(path).createFolderRecursive();
             put(s.item(path + u"file"), "deep");
             EXPECT_EQ(s.content(path + u"file"), "deep");
           }},
          {"OneNameInManyFolders",
           [](Store& s) {
             s.fill({{u"a/same", "1"}, {u"b/same", "2"}, {u"same", "3"}});
             EXPECT_EQ(s.content(u"a/same"), "1");
             EXPECT_EQ(s.content(u"b/same"), "2");
             EXPECT_EQ(s.content(u"same"), "3");
           }},
          {"AgainWhatWasRemoved",
           [](Store& s) {
             s.fill({{u"a", "old"}});
             s.item(u"a").removeFile();
             s.item(u"a").createFolder();
             s.item(u"a").removeFolder();
             s.item(u"a").createFile();
             EXPECT_EQ(s.content(u"a"), "");
           }},
      }};
}

}  // namespace foundation::storage::testing::detail
