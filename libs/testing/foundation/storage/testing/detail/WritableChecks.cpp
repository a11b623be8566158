#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/TransactionalStream.h>

namespace foundation::storage::testing::detail {

CheckGroup writableChecks() {
  return {
      "Writable",
      {Capability::Write, Capability::SetWritable},
      {
          {"CanBeTakenAndGiven",
           [](Store& s) {
             s.fill({{u"a", "x"}});
             s.item(u"a").setWritable(false);
             EXPECT_FALSE(s.item(u"a").getFileAttributes().isWritable());
             s.item(u"a").setWritable(true);
             EXPECT_TRUE(s.item(u"a").getFileAttributes().isWritable());
             put(s.item(u"a"), "y");
             EXPECT_EQ(s.content(u"a"), "y");
           }},
          {"WithoutItNothingIsWritten",
           [](Store& s) {
             s.fill({{u"a", "x"}});
             s.item(u"a").setWritable(false);
             EXPECT_TRUE(refusesStream(ErrorCode::PermissionDenied, s.item(u"a"), [&] { put(s.item(u"a"), "y"); }));
             EXPECT_EQ(s.content(u"a"), "x");
             s.item(u"a").setWritable(true);
           }},
          {"WithoutItNothingIsTruncated",
           [](Store& s) {
             s.fill({{u"a", "xyz"}});
             s.item(u"a").setWritable(false);
             EXPECT_TRUE(
                 refusesStream(ErrorCode::PermissionDenied, s.item(u"a"), [&] { s.item(u"a").truncateToSize(1); }));
             EXPECT_EQ(s.content(u"a"), "xyz");
             s.item(u"a").setWritable(true);
           }},
          {"ShowsInListings",
           [](Store& s) {
             s.fill({{u"a", "x"}});
             s.item(u"a").setWritable(false);
             const auto listing = s.folder().listFiles({});
             listing->next();
             EXPECT_FALSE(listing->current().getFileAttributes()->isWritable());
             s.item(u"a").setWritable(true);
           }},
          {"OfAFolder",
           [](Store& s) {
             s.fill({{u"b/c", "x"}});
             s.item(u"b").setWritable(false);
             EXPECT_FALSE(s.item(u"b").getFolderAttributes().isWritable());
             EXPECT_EQ(s.content(u"b/c"), "x");
             s.item(u"b").setWritable(true);
             EXPECT_TRUE(s.item(u"b").getFolderAttributes().isWritable());
           }},
          {"OfAMissingEntryIsRefused",
           [](Store& s) {
             EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"), [&] { s.item(u"a").setWritable(false); }));
           }},
      }};
}

}  // namespace foundation::storage::testing::detail
