#include <foundation/storage/testing/detail/Check.h>

namespace foundation::storage::testing::detail {

CheckGroup removeChecks() {
  return {
      "Remove",
      {Capability::Write},
      {
          {"AFile",
           [](Store& s) {
             s.fill({{u"a", "content"}, {u"b", "other"}});
             s.item(u"a").removeFile();
             EXPECT_FALSE(s.item(u"a").fileExists());
             EXPECT_EQ(s.names(), Names{u"b"});
           }},
          {"AMissingFileIsRefused",
           [](Store& s) {
             EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"), [&] { s.item(u"a").removeFile(); }));
           }},
          {"AFolderIsNoFile",
           [](Store& s) {
             s.fill({{u"a/", ""}});
             EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"a"), [&] { s.item(u"a").removeFile(); }));
             EXPECT_TRUE(s.item(u"a").folderExists());
           }},
          {"AnEmptyFolder",
           [](Store& s) {
             s.fill({{u"a/", ""}, {u"b/", ""}});
             s.item(u"a").removeFolder();
             EXPECT_EQ(s.names(), Names{u"b"});
           }},
          {"AFolderThatIsNotEmptyIsRefused",
           [](Store& s) {
             s.fill({{u"a/x", "1"}, {u"b/c/", ""}});
             for (const auto* folder : {u"a", u"b"})
               EXPECT_TRUE(refuses(ErrorCode::FolderNotEmpty, s.item(folder), [&] { s.item(folder).removeFolder(); }));
             EXPECT_EQ(s.content(u"a/x"), "1");
           }},
          {"AMissingFolderIsRefused",
           [](Store& s) {
             EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"), [&] { s.item(u"a").removeFolder(); }));
           }},
          {"AFileIsNoFolder",
           [](Store& s) {
             s.fill({{u"a", "content"}});
             EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"a"), [&] { s.item(u"a").removeFolder(); }));
             EXPECT_EQ(s.content(u"a"), "content");
           }},
          {"ATreeAtOnce",
           [](Store& s) {
             s.fill({{u"a/x", "1"}, {u"a/b/c/y", "2"}, {u"a/d/", ""}, {u"z", "3"}});
             s.item(u"a").removeFolderRecursively();
             EXPECT_EQ(s.names(), Names{u"z"});
             EXPECT_FALSE(s.item(u"a/b/c/y").fileExists());
           },
           {Capability::RecursiveRemoval}},
          {"AnEmptyTreeAtOnce",
           [](Store& s) {
             s.fill({{u"a/", ""}});
             s.item(u"a").removeFolderRecursively();
             EXPECT_EQ(s.names(), Names{});
           },
           {Capability::RecursiveRemoval}},
          {"AMissingTreeIsRefused",
           [](Store& s) {
             EXPECT_TRUE(
                 refuses(ErrorCode::ResourceNotFound, s.item(u"a"), [&] { s.item(u"a").removeFolderRecursively(); }));
           },
           {Capability::RecursiveRemoval}},
          {"AFileIsNoTree",
           [](Store& s) {
             s.fill({{u"a", "content"}});
             EXPECT_TRUE(
                 refuses(ErrorCode::InvalidLocation, s.item(u"a"), [&] { s.item(u"a").removeFolderRecursively(); }));
             EXPECT_EQ(s.content(u"a"), "content");
           },
           {Capability::RecursiveRemoval}},
          {"InAMissingFolderIsRefused",
           [](Store& s) {
             EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a/b"), [&] { s.item(u"a/b").removeFile(); }));
           }},
      }};
}

}  // namespace foundation::storage::testing::detail
