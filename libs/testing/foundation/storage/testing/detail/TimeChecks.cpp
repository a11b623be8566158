#include <foundation/storage/testing/detail/Check.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace foundation::storage::testing::detail {
namespace {

using boost::posix_time::ptime;

ptime moment(int year, std::int64_t microseconds = 0) {
  return ptime(boost::gregorian::date(static_cast<unsigned short>(year), 2, 28)) + boost::posix_time::hours(23) +
         boost::posix_time::microseconds(microseconds);
}

void expectKept(Store& s, const ptime& time) {
  s.fill({{u"a", "x"}});
  s.item(u"a").setLastModified(time);
  EXPECT_EQ(s.item(u"a").getFileAttributes().getLastModified(), time);
}

}  // namespace

CheckGroup timeChecks() {
  return {"Time",
          {Capability::Write, Capability::SetLastModified},
          {
              {"IsKeptToTheMicrosecond", [](Store& s) { expectKept(s, moment(2024, 123456)); }},
              {"CanLieInThePast", [](Store& s) { expectKept(s, moment(1971)); }},
              {"CanLieBefore1970", [](Store& s) { expectKept(s, moment(1931)); }},
              {"CanLieInTheFuture", [](Store& s) { expectKept(s, moment(2099)); }},
              {"OfAFolder",
               [](Store& s) {
                 s.fill({{u"b/", ""}});
                 s.item(u"b").setLastModified(moment(2020, 7));
                 EXPECT_EQ(s.item(u"b").getFolderAttributes().getLastModified(), moment(2020, 7));
               }},
              {"ShowsInListings",
               [](Store& s) {
                 s.fill({{u"a", "x"}});
                 s.item(u"a").setLastModified(moment(2020, 7));
                 const auto listing = s.folder().listFiles({});
                 listing->next();
                 EXPECT_EQ(listing->current().getFileAttributes()->getLastModified(), moment(2020, 7));
               }},
              {"LeavesTheContentAlone",
               [](Store& s) {
                 s.fill({{u"a", "x"}});
                 s.item(u"a").setLastModified(moment(2020));
                 EXPECT_EQ(s.content(u"a"), "x");
               }},
              {"IsRenewedByWriting",
               [](Store& s) {
                 s.fill({{u"a", "x"}});
                 s.item(u"a").setLastModified(moment(2020));
                 put(s.item(u"a"), "y");
                 EXPECT_GT(s.item(u"a").getFileAttributes().getLastModified(), moment(2020));
               }},
              {"IsRenewedByTruncating",
               [](Store& s) {
                 s.fill({{u"a", "xyz"}});
                 s.item(u"a").setLastModified(moment(2020));
                 s.item(u"a").truncateToSize(1);
                 EXPECT_GT(s.item(u"a").getFileAttributes().getLastModified(), moment(2020));
               }},
              {"OfAFolderIsRenewedByItsEntries",
               [](Store& s) {
                 s.fill({{u"b/", ""}});
                 s.item(u"b").setLastModified(moment(2020));
                 put(s.item(u"b/new"), "y");
                 EXPECT_GT(s.item(u"b").getFolderAttributes().getLastModified(), moment(2020));
                 s.item(u"b").setLastModified(moment(2020));
                 s.item(u"b/new").removeFile();
                 EXPECT_GT(s.item(u"b").getFolderAttributes().getLastModified(), moment(2020));
               }},
              {"IsKeptByMoving",
               [](Store& s) {
                 s.fill({{u"a", "x"}});
                 s.item(u"a").setLastModified(moment(2020));
                 s.item(u"a").moveFile(s.item(u"b").getLocation(), ReplacementPolicy::NoClobber);
                 EXPECT_EQ(s.item(u"b").getFileAttributes().getLastModified(), moment(2020));
               }},
              {"ThatIsNoneIsRefused",
               [](Store& s) {
                 s.fill({{u"a", "x"}});
                 s.item(u"a").setLastModified(moment(2020));
                 EXPECT_ANY_THROW(s.item(u"a").setLastModified(boost::posix_time::not_a_date_time));
                 EXPECT_ANY_THROW(s.item(u"a").setLastModified(boost::posix_time::pos_infin));
                 EXPECT_EQ(s.item(u"a").getFileAttributes().getLastModified(), moment(2020));
               }},
              {"OfAMissingEntryIsRefused",
               [](Store& s) {
                 EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"),
                                     [&] { s.item(u"a").setLastModified(moment(2020)); }));
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
