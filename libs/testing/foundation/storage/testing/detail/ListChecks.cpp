#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>

#include <set>
#include <stdexcept>

namespace foundation::storage::testing::detail {

using provider::FolderEntry;
using provider::IProvider;

namespace {

const Contents mixture{{u"a", "1"}, {u"b/", ""}, {u"c", "333"}, {u"d/inner", "x"}};

using ListOperation = IProvider::Listing (StorageItem::*)(std::u16string) const;

constexpr ListOperation plainOperations[] = {
    &StorageItem::listAll,          &StorageItem::listFiles,          &StorageItem::listFolders,
    &StorageItem::listAllNamesOnly, &StorageItem::listFilesNamesOnly, &StorageItem::listFoldersNamesOnly};

std::vector<FolderEntry> entriesOf(IProvider::Listing listing) {
  std::vector<FolderEntry> entries;
  while (listing->hasNext()) {
    listing->next();
    entries.push_back(listing->current());
  }
  return entries;
}

}  // namespace

CheckGroup listChecks() {
  return {"List",
          {},
          {
              {"AnEmptyFolder",
               [](Store& s) {
                 s.fill({});
                 for (const auto operation : plainOperations)
                   EXPECT_FALSE((s.folder().*operation)({})->hasNext());
               }},
              {"FilesAndFolders",
               [](Store& s) {
                 s.fill(mixture);
                 EXPECT_EQ(namesIn(s.folder().listAll({})), (Names{u"a", u"b", u"c", u"d"}));
                 for (const auto& entry : entriesOf(s.folder().listAll({})))
                   EXPECT_EQ(entry.isFile(), entry.getName() == u"a" || entry.getName() == u"c");
               }},
              {"OnlyFiles",
               [](Store& s) {
                 s.fill(mixture);
                 EXPECT_EQ(namesIn(s.folder().listFiles({})), (Names{u"a", u"c"}));
               }},
              {"OnlyFolders",
               [](Store& s) {
                 s.fill(mixture);
                 EXPECT_EQ(namesIn(s.folder().listFolders({})), (Names{u"b", u"d"}));
               }},
              {"NamesOfAll",
               [](Store& s) {
                 s.fill(mixture);
                 EXPECT_EQ(namesIn(s.folder().listAllNamesOnly({})), (Names{u"a", u"b", u"c", u"d"}));
               }},
              {"NamesOfFiles",
               [](Store& s) {
                 s.fill(mixture);
                 EXPECT_EQ(namesIn(s.folder().listFilesNamesOnly({})), (Names{u"a", u"c"}));
               }},
              {"NamesOfFolders",
               [](Store& s) {
                 s.fill(mixture);
                 EXPECT_EQ(namesIn(s.folder().listFoldersNamesOnly({})), (Names{u"b", u"d"}));
               }},
              {"NamesTellFilesFromFolders",
               [](Store& s) {
                 s.fill(mixture);
                 for (const auto& entry : entriesOf(s.folder().listAllNamesOnly({})))
                   EXPECT_EQ(entry.isFile(), entry.getName() == u"a" || entry.getName() == u"c");
               }},
              {"AFolderInTheFolder",
               [](Store& s) {
                 s.fill(mixture);
                 EXPECT_EQ(s.names(u"d"), Names{u"inner"});
                 EXPECT_EQ(s.names(u"d/"), Names{u"inner"});
               }},
              {"AttributesOfTheRightKind",
               [](Store& s) {
                 s.fill(mixture);
                 for (const auto& entry : entriesOf(s.folder().listAll({}))) {
                   EXPECT_EQ(entry.getFileAttributes().has_value(), entry.isFile());
                   EXPECT_EQ(entry.getFolderAttributes().has_value(), !entry.isFile());
                 }
               }},
              {"TheAttributesThatAnEntryHasByItself",
               [](Store& s) {
                 s.fill(mixture);
                 for (const auto& entry : entriesOf(s.folder().listFiles({}))) {
                   const auto own = s.item(entry.getName()).getFileAttributes();
                   EXPECT_EQ(entry.getFileAttributes()->getSize(), own.getSize());
                   EXPECT_EQ(entry.getFileAttributes()->getLastModified(), own.getLastModified());
                   EXPECT_EQ(entry.getFileAttributes()->isWritable(), own.isWritable());
                   EXPECT_EQ(entry.getFileAttributes()->isHidden(), own.isHidden());
                 }
               }},
              {"AFolderTwiceIndependently",
               [](Store& s) {
                 s.fill(mixture);
                 const auto first = s.folder().listAll({});
                 first->next();
                 const auto name = first->current().getName();
                 EXPECT_EQ(entriesOf(s.folder().listAll({})).size(), 4u);
                 EXPECT_EQ(first->current().getName(), name);
               }},
              {"NoEntryBeforeTheFirst",
               [](Store& s) {
                 s.fill(mixture);
                 const auto listing = s.folder().listAll({});
                 EXPECT_THROW(listing->current(), std::logic_error);
                 EXPECT_TRUE(listing->hasNext());
                 EXPECT_THROW(listing->current(), std::logic_error);
               }},
              {"NoEntryAfterTheLast",
               [](Store& s) {
                 s.fill({{u"a", ""}});
                 const auto listing = s.folder().listAll({});
                 listing->next();
                 EXPECT_EQ(listing->current().getName(), u"a");
                 EXPECT_FALSE(listing->hasNext());
                 listing->next();
                 EXPECT_THROW(listing->current(), std::logic_error);
               }},
              {"AskingForMoreMovesNothing",
               [](Store& s) {
                 s.fill({{u"a", ""}, {u"b", ""}});
                 const auto listing = s.folder().listAll({});
                 listing->next();
                 const auto name = listing->current().getName();
                 for (int times = 0; times < 3; ++times)
                   EXPECT_TRUE(listing->hasNext());
                 EXPECT_EQ(listing->current().getName(), name);
                 listing->next();
                 EXPECT_NE(listing->current().getName(), name);
               }},
              {"GoesOnWithoutBeingAskedForMore",
               [](Store& s) {
                 s.fill(mixture);
                 const auto listing = s.folder().listAllNamesOnly({});
                 std::set<std::u16string> names;
                 for (int count = 0; count < 4; ++count) {
                   listing->next();
                   names.insert(listing->current().getName());
                 }
                 EXPECT_EQ(names.size(), 4u);
                 EXPECT_FALSE(listing->hasNext());
               }},
              {"BeginsAnew",
               [](Store& s) {
                 s.fill(mixture);
                 const auto listing = s.folder().listAll({});
                 listing->next();
                 listing->reset();
                 EXPECT_THROW(listing->current(), std::logic_error);
                 int count = 0;
                 for (; listing->hasNext(); ++count)
                   listing->next();
                 EXPECT_EQ(count, 4);
               }},
              {"BeginsAnewWithWhatIsThereThen",
               [](Store& s) {
                 s.fill({{u"a", ""}});
                 const auto listing = s.folder().listAllNamesOnly({});
                 listing->next();
                 put(s.item(u"b"), "");
                 s.item(u"a").removeFile();
                 listing->reset();
                 ASSERT_TRUE(listing->hasNext());
                 listing->next();
                 EXPECT_EQ(listing->current().getName(), u"b");
                 EXPECT_FALSE(listing->hasNext());
               },
               {Capability::Write}},
              {"SurvivesWhatChangesMeanwhile",
               [](Store& s) {
                 Contents contents;
                 for (char16_t letter = u'a'; letter <= u'z'; ++letter)
                   contents[{letter}] = "x";
                 s.fill(contents);
                 const auto listing = s.folder().listAll({});
                 std::set<std::u16string> seen;
                 while (listing->hasNext()) {
                   listing->next();
                   seen.insert(listing->current().getName());
                   s.item(listing->current().getName()).removeFile();
                 }
                 EXPECT_EQ(seen.size(), 26u) << "what was there from the beginning until it was reached has to be seen";
                 EXPECT_EQ(s.names(), Names{});
               },
               {Capability::Write}},
              {"OutlivesItsItem",
               [](Store& s) {
                 s.fill(mixture);
                 IProvider::Listing listing;
                 {
                   const StorageItem temporary(s.item(u"d"));
                   listing = temporary.listAll({});
                 }
                 EXPECT_EQ(namesIn(std::move(listing)), Names{u"inner"});
               }},
              {"AnEntryIsACopy",
               [](Store& s) {
                 s.fill({{u"a", "1"}, {u"b", "22"}});
                 const auto listing = s.folder().listAll({});
                 listing->next();
                 const auto entry = listing->current();
                 const auto name = entry.getName();
                 listing->next();
                 EXPECT_EQ(entry.getName(), name);
                 EXPECT_EQ(entry.getFileAttributes()->getSize(), name == u"a" ? 1u : 2u);
               }},
              {"TenThousandEntries",
               [](Store& s) {
                 Contents contents;
                 for (int number = 0; number < 10'000; ++number) {
                   const auto text = std::to_string(number);
                   contents[std::u16string(text.begin(), text.end())] = "";
                 }
                 s.fill(contents);
                 const auto names = s.names();
                 EXPECT_EQ(names.size(), contents.size());
                 EXPECT_EQ(std::set<std::u16string>(names.begin(), names.end()).size(), contents.size());
               }},
              {"AMissingFolderIsRefused",
               [](Store& s) {
                 for (const auto operation : plainOperations)
                   EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"),
                                       [&] { (s.item(u"a").*operation)({})->hasNext(); }));
               }},
              {"AFileIsRefused",
               [](Store& s) {
                 s.fill({{u"a", "1"}});
                 for (const auto operation : plainOperations)
                   EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"a"),
                                       [&] { (s.item(u"a").*operation)({})->hasNext(); }));
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
