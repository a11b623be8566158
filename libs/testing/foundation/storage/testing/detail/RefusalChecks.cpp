#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

// How a store answers where something is asked that it does not declare.

namespace foundation::storage::testing::detail {

CheckGroup refusalChecks() {
  constexpr auto unsupported = ErrorCode::UnsupportedOperation;
  return {
      "Refusal",
      {},
      {
          {"OfRecursiveListings",
           [](Store& s) {
             for (const auto* wildcard : {u"", u"*"}) {
               EXPECT_TRUE(refuses(unsupported, s.folder(), [&] { s.folder().listAllRecursive(wildcard); }));
               EXPECT_TRUE(refuses(unsupported, s.folder(), [&] { s.folder().listAllRecursiveNamesOnly(wildcard); }));
             }
           },
           {},
           {Capability::RecursiveListing}},
          {"OfChangeEvents", refuseChangeEvents, {}, {Capability::ChangeEvents}},
          {"OfWildcardsIsAWholeListing",
           [](Store& s) {
             s.fill({{u"a.x", ""}, {u"b.y", ""}});
             EXPECT_EQ(namesIn(s.folder().listAll(u"*.x")), (Names{u"a.x", u"b.y"}));
           },
           {},
           {Capability::Wildcards}},
          {"OfRecursiveRemoval",
           [](Store& s) {
             s.fill({{u"a/x", "1"}});
             EXPECT_TRUE(refuses(unsupported, s.item(u"a"), [&] { s.item(u"a").removeFolderRecursively(); }));
             EXPECT_EQ(s.content(u"a/x"), "1");
           },
           {Capability::Write},
           {Capability::RecursiveRemoval}},
          {"OfSettingTheLastModification",
           [](Store& s) {
             s.fill({{u"a", "1"}});
             const boost::posix_time::ptime time(boost::gregorian::date(2020, 1, 1));
             EXPECT_TRUE(refuses(unsupported, s.item(u"a"), [&] { s.item(u"a").setLastModified(time); }));
           },
           {Capability::Write},
           {Capability::SetLastModified}},
          {"OfSettingWritable",
           [](Store& s) {
             s.fill({{u"a", "1"}});
             EXPECT_TRUE(refuses(unsupported, s.item(u"a"), [&] { s.item(u"a").setWritable(false); }));
             EXPECT_TRUE(s.item(u"a").getFileAttributes().isWritable());
           },
           {Capability::Write},
           {Capability::SetWritable}},
          {"OfStorageInformation",
           [](Store& s) {
             EXPECT_TRUE(refuses(unsupported, s.folder(), [&] { s.folder().getProviderStorageInfo(); }));
           },
           {},
           {Capability::StorageInfo}},
          {"OfAppending",
           [](Store& s) {
             s.fill({{u"a", "1"}});
             EXPECT_TRUE(refusesStream(unsupported, s.item(u"a"), [&] { s.item(u"a").openStream(appending); }));
             EXPECT_EQ(s.content(u"a"), "1");
           },
           {Capability::Write},
           {Capability::Append}},
          {"OfKeepingContent",
           [](Store& s) {
             s.fill({{u"a", "1"}});
             EXPECT_TRUE(refusesStream(unsupported, s.item(u"a"), [&] { s.item(u"a").openStream(patching); }));
             EXPECT_EQ(s.content(u"a"), "1");
           },
           {Capability::Write},
           {Capability::RandomAccess}},
      }};
}

}  // namespace foundation::storage::testing::detail
