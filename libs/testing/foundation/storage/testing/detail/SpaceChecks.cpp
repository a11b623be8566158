#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/TransactionalStream.h>

namespace foundation::storage::testing::detail {

using provider::StreamClosePolicy;
using provider::TransactionPolicy;

CheckGroup spaceChecks() {
  const std::vector<Capability> limited{Capability::Write, Capability::LimitedSpace};
  return {"Space",
          {},
          {
              {"OccupiedIsWithinTheCapacity",
               [](Store& s) {
                 const auto info = s.folder().getProviderStorageInfo();
                 EXPECT_LE(info.getSpaceOccupied(), info.getStorageCapacity());
                 EXPECT_GT(info.getStorageCapacity(), 0u);
               },
               {Capability::StorageInfo}},
              {"IsTakenAndGivenBack",
               [](Store& s) {
                 s.limit(1000);
                 const auto empty = s.folder().getProviderStorageInfo().getSpaceOccupied();
                 put(s.item(u"a"), std::string(600, 'x'));
                 EXPECT_GT(s.folder().getProviderStorageInfo().getSpaceOccupied(), empty);
                 s.item(u"a").removeFile();
                 EXPECT_EQ(s.folder().getProviderStorageInfo().getSpaceOccupied(), empty);
               },
               {Capability::Write, Capability::LimitedSpace, Capability::StorageInfo}},
              {"CanBeUsedUp",
               [](Store& s) {
                 s.limit(1000);
                 put(s.item(u"a"), std::string(1000, 'x'));
                 EXPECT_EQ(s.content(u"a").size(), 1000u);
               },
               limited},
              {"WithoutItWritingFails",
               [](Store& s) {
                 s.limit(1000);
                 EXPECT_TRUE(refusesStream(ErrorCode::NoSpaceLeft, s.item(u"a"),
                                           [&] { put(s.item(u"a"), std::string(1001, 'x')); }));
               },
               limited},
              {"WithoutItOtherFilesStay",
               [](Store& s) {
                 s.limit(1000);
                 put(s.item(u"a"), std::string(900, 'a'));
                 EXPECT_TRUE(refusesStream(ErrorCode::NoSpaceLeft, s.item(u"b"),
                                           [&] { put(s.item(u"b"), std::string(200, 'b')); }));
                 EXPECT_EQ(s.content(u"a"), std::string(900, 'a'));
               },
               limited},
              {"WithoutItWhatIsThereCanBeOverwritten",
               [](Store& s) {
                 s.limit(1000);
                 put(s.item(u"a"), std::string(1000, 'a'));
                 auto options = replacing;
                 options.truncate = ByteStreamTruncate::PreserveExisting;
                 const auto stream = s.item(u"a").openStream(options);
                 writeAll(*stream, std::string(1000, 'b'));
                 stream->close();
                 EXPECT_EQ(s.content(u"a"), std::string(1000, 'b'));
               },
               {Capability::Write, Capability::LimitedSpace, Capability::RandomAccess}},
              {"WithoutItATransactionChangesNothing",
               [](Store& s) {
                 s.limit(1000);
                 put(s.item(u"a"), std::string(600, 'a'));
                 EXPECT_TRUE(refusesStream(ErrorCode::NoSpaceLeft, s.item(u"a"), [&] {
                   const auto stream = s.item(u"a").openTransactionalStream(replacing);
                   writeAll(*stream, std::string(600, 'b'));
                   stream->close(StreamClosePolicy::Commit);
                 }));
                 EXPECT_EQ(s.content(u"a"), std::string(600, 'a'));
                 EXPECT_EQ(s.names(), Names{u"a"});
               },
               limited},
              {"WithoutItAnAtomicCopyChangesNothing",
               [](Store& s) {
                 s.limit(1000);
                 put(s.item(u"a"), std::string(400, 'a'));
                 put(s.item(u"b"), std::string(500, 'b'));
                 EXPECT_TRUE(refusesStream(ErrorCode::NoSpaceLeft, s.item(u"b"), [&] {
                   s.item(u"a").copyFile(s.item(u"b"), {ReplacementPolicy::Overwrite, TransactionPolicy::Atomic, {}});
                 }));
                 EXPECT_EQ(s.content(u"b"), std::string(500, 'b'));
                 EXPECT_EQ(s.names(), (Names{u"a", u"b"}));
               },
               limited},
              {"WithoutItGrowingFails",
               [](Store& s) {
                 s.limit(1000);
                 put(s.item(u"a"), "abc");
                 EXPECT_TRUE(
                     refusesStream(ErrorCode::NoSpaceLeft, s.item(u"a"), [&] { s.item(u"a").truncateToSize(2000); }));
                 EXPECT_TRUE(s.content(u"a").starts_with("abc"));
               },
               limited},
              {"ComesBackWhenSomethingIsRemoved",
               [](Store& s) {
                 s.limit(1000);
                 put(s.item(u"a"), std::string(1000, 'a'));
                 s.item(u"a").removeFile();
                 put(s.item(u"b"), std::string(1000, 'b'));
                 EXPECT_EQ(s.content(u"b"), std::string(1000, 'b'));
               },
               limited},
          }};
}

}  // namespace foundation::storage::testing::detail
