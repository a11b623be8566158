#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

// How a store answers that cannot be written to.

namespace foundation::storage::testing::detail {
namespace {

/// Every change is refused with the first location, and changes nothing.
void expectRefused(Store& s, const char16_t* path, void (*change)(const StorageItem& item, const StorageItem& other)) {
  s.fill({{u"a", "1"}, {u"b/", ""}});
  const auto item = s.item(path);
  EXPECT_TRUE(refusesStream(ErrorCode::ReadOnlyProvider, item, [&] { change(item, s.item(u"new")); }));
  EXPECT_EQ(s.content(u"a"), "1");
  EXPECT_EQ(s.names(), (Names{u"a", u"b"}));
}

using I = const StorageItem&;
constexpr auto overwrite = ReplacementPolicy::Overwrite;

}  // namespace

CheckGroup readOnlyChecks() {
  using S = Store;
  CheckGroup group{
      "ReadOnly",
      {},
      {
          {"CreatesNoFile", [](S& s) { expectRefused(s, u"new", [](I item, I) { item.createFile(); }); }},
          {"CreatesNoFolder", [](S& s) { expectRefused(s, u"new", [](I item, I) { item.createFolder(); }); }},
          {"CreatesNoFolders",
           [](S& s) { expectRefused(s, u"new/x", [](I item, I) { item.createFolderRecursive(); }); }},
          {"RemovesNoFile", [](S& s) { expectRefused(s, u"a", [](I item, I) { item.removeFile(); }); }},
          {"RemovesNoFolder", [](S& s) { expectRefused(s, u"b", [](I item, I) { item.removeFolder(); }); }},
          {"RemovesNoTree", [](S& s) { expectRefused(s, u"b", [](I item, I) { item.removeFolderRecursively(); }); }},
          {"MovesNoFile",
           [](S& s) { expectRefused(s, u"a", [](I item, I to) { item.moveFile(to.getLocation(), overwrite); }); }},
          {"MovesNoFolder",
           [](S& s) { expectRefused(s, u"b", [](I item, I to) { item.moveFolder(to.getLocation(), overwrite); }); }},
          {"CopiesNoFile", [](S& s) { expectRefused(s, u"a", [](I item, I to) { item.copyFile(to, overwrite); }); }},
          {"OpensNothingForWriting",
           [](S& s) { expectRefused(s, u"a", [](I item, I) { item.openStream(replacing); }); }},
          {"BeginsNoTransaction",
           [](S& s) {
             s.fill({{u"a", "1"}});
             EXPECT_ANY_THROW(s.item(u"a").openTransactionalStream(replacing));
             EXPECT_EQ(s.content(u"a"), "1");
           }},
          {"SetsNoTime",
           [](S& s) {
             expectRefused(s, u"a", [](I item, I) {
               item.setLastModified(boost::posix_time::ptime(boost::gregorian::date(2020, 1, 1)));
             });
           }},
          {"SetsNothingWritable", [](S& s) { expectRefused(s, u"a", [](I item, I) { item.setWritable(true); }); }},
          {"TruncatesNothing", [](S& s) { expectRefused(s, u"a", [](I item, I) { item.truncateToSize(0); }); }},
      }};
  for (auto& check : group.checks)
    check.lacks = {Capability::Write};
  return group;
}

}  // namespace foundation::storage::testing::detail
