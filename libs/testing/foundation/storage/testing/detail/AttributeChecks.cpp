#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>

namespace foundation::storage::testing::detail {

CheckGroup attributeChecks() {
  return {
      "Attribute",
      {},
      {
          {"SizeOfAFile",
           [](Store& s) {
             s.fill({{u"a", "12345"}, {u"empty", ""}, {u"big", sample(severalBlocks)}});
             EXPECT_EQ(s.item(u"a").getFileAttributes().getSize(), 5u);
             EXPECT_EQ(s.item(u"empty").getFileAttributes().getSize(), 0u);
             EXPECT_EQ(s.item(u"big").getFileAttributes().getSize(), severalBlocks);
             EXPECT_TRUE(s.item(u"empty").getFileAttributes().hasSizeAttribute());
           }},
          {"SizeFollowsTheContent",
           [](Store& s) {
             s.fill({{u"a", "12345"}});
             put(s.item(u"a"), "12");
             EXPECT_EQ(s.item(u"a").getFileAttributes().getSize(), 2u);
           },
           {Capability::Write}},
          {"NothingIsHiddenWithoutReason",
           [](Store& s) {
             s.fill({{u"a", ""}, {u"b/", ""}});
             EXPECT_FALSE(s.item(u"a").getFileAttributes().isHidden());
             EXPECT_FALSE(s.item(u"b").getFolderAttributes().isHidden());
           }},
          {"NothingIsALinkWithoutReason",
           [](Store& s) {
             s.fill({{u"a", ""}, {u"b/", ""}});
             EXPECT_FALSE(s.item(u"a").getFileAttributes().isSymlink());
             EXPECT_FALSE(s.item(u"b").getFolderAttributes().isSymlink());
           }},
          {"WhatCanBeWrittenIsWritable",
           [](Store& s) {
             s.fill({{u"a", ""}, {u"b/", ""}});
             EXPECT_TRUE(s.item(u"a").getFileAttributes().isWritable());
             EXPECT_TRUE(s.item(u"b").getFolderAttributes().isWritable());
           },
           {Capability::Write}},
          {"AFolderHasSome",
           [](Store& s) {
             s.fill({{u"b/", ""}});
             EXPECT_NO_THROW(s.item(u"b").getFolderAttributes().getLastModified());
             EXPECT_NO_THROW(s.folder().getFolderAttributes().getLastModified());
           }},
          {"WritingGoesForwardInTime",
           [](Store& s) {
             s.fill({{u"a", ""}});
             const auto before = s.item(u"a").getFileAttributes().getLastModified();
             put(s.item(u"a"), "new");
             EXPECT_GE(s.item(u"a").getFileAttributes().getLastModified(), before);
           },
           {Capability::Write}},
          {"OfAMissingEntryAreRefused",
           [](Store& s) {
             EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"), [&] { s.item(u"a").getFileAttributes(); }));
             EXPECT_TRUE(
                 refuses(ErrorCode::ResourceNotFound, s.item(u"a"), [&] { s.item(u"a").getFolderAttributes(); }));
           }},
          {"OfAFolderAreNoFiles",
           [](Store& s) {
             s.fill({{u"a/", ""}});
             EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"a"), [&] { s.item(u"a").getFileAttributes(); }));
           }},
          {"OfAFileAreNoFolders",
           [](Store& s) {
             s.fill({{u"a", ""}});
             EXPECT_TRUE(
                 refuses(ErrorCode::InvalidLocation, s.item(u"a"), [&] { s.item(u"a").getFolderAttributes(); }));
           }},
          {"FurtherOnesCanBeWalked",
           [](Store& s) {
             s.fill({{u"a", ""}});
             for (const auto& [key, value] : s.item(u"a").getExtendedAttributes()) {
               EXPECT_FALSE(key.empty());
               EXPECT_FALSE(value.empty());
             }
           }},
      }};
}

}  // namespace foundation::storage::testing::detail
