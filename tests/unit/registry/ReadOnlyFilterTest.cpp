// What a read-only view passes on, what it refuses, and which locations come out of it.

#include "Stores.h"

#include <foundation/storage/provider/ChangeEventsNotSupportedException.h>
#include <foundation/storage/provider/InvalidateProvider.h>
#include <foundation/storage/provider/extensions/IFileIdentity.h>
#include <foundation/storage/registry/ReadOnlyFilter.h>
#include <foundation/storage/testing/EventRecorder.h>
#include <foundation/storage/testing/PrimitiveProvider.h>

#include <boost/date_time/posix_time/posix_time.hpp>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <unistd.h>
#include <vector>

namespace foundation::storage::registry {
namespace {

using namespace std::chrono_literals;
using testing::ChangeEvent;
using testing::EventRecorder;
using testing::Faults;
using testing::FaultyProvider;

const std::vector<events::Kind> allKinds{events::Kind::WatchedFolderModified, events::Kind::WatchedFolderRemoved,
                                         events::Kind::EntryAdded, events::Kind::EntryModified,
                                         events::Kind::EntryRemoved};

/// A view of a store that notes what it is asked.
class ReadOnlyFilterTest : public ::testing::Test {
 protected:
  ReadOnlyFilterTest() {
    put(direct(u"a.x"), "content");
    direct(u"d").createFolder();
    put(direct(u"d/b.x"), "1");
    put(direct(u"d/.c%20100%25"), "12");
    faults->clear();
  }

  StorageItem direct(const std::u16string& path) const { return {store, StorageIRI(u"memory:///" + path)}; }
  StorageItem shown(const std::u16string& path) const { return {view, StorageIRI(u"readonly+memory:///" + path)}; }

  const std::shared_ptr<Faults> faults = std::make_shared<Faults>();
  const std::shared_ptr<IProvider> store = std::make_shared<FaultyProvider>(
      backend::memory::MemoryProviderFactory().buildProvider(StorageIRI(u"memory:///")), faults);
  const std::shared_ptr<IProvider> view = ReadOnlyFilter().buildProvider(store, u"readonly");
};

using List = IProvider::Listing (StorageItem::*)(std::u16string) const;

std::string listed(const StorageItem& folder, List list, const std::u16string& wildcard) {
  std::ostringstream text;
  const auto entries = (folder.*list)(wildcard);
  for (int round = 0; round < 2; ++round, entries->reset())
    while (entries->hasNext()) {
      entries->next();
      const auto entry = entries->current();
      text << StorageIRI(StorageIRI(u"s:///"), entry.getName()) << entry.isFile()
           << entry.getFileAttributes().has_value() << entry.getFolderAttributes().has_value() << '\n';
    }
  return text.str();
}

TEST_F(ReadOnlyFilterTest, AnswersWhateverIsReadAsTheStoreDoes) {
  using Read = std::function<std::string(const StorageItem& file, const StorageItem& folder)>;
  using I = const StorageItem&;
  std::vector<Read> reads{
      [](I file, I folder) { return std::to_string(file.fileExists()) + std::to_string(folder.fileExists()); },
      [](I file, I folder) { return std::to_string(file.folderExists()) + std::to_string(folder.folderExists()); },
      [](I file, I) { return std::to_string(static_cast<int>(file.exists())); },
      [](I file, I) { return std::to_string(static_cast<int>(file.existsExtended())); },
      [](I file, I) { return std::to_string(file.getFileAttributes().getSize()); },
      [](I, I folder) { return to_iso_string(folder.getFolderAttributes().getLastModified()); },
      [](I file, I) { return std::to_string(file.getExtendedAttributes().hasAttribute("a")); },
      [](I file, I) { return std::to_string(file.getPathComparator()(u"a", u"A", CaseModifier::InSensitive)); },
      [](I file, I) { return std::to_string(file.getFilenameSensitivity().isCaseSensitive); },
      [](I file, I) { return std::to_string(file.getProviderStorageInfo().getSpaceOccupied()); },
      [](I file, I) { return std::to_string(file.getProviderCacheUsage().getSpaceAvailable().has_value()); },
      [](I file, I) { return contentOf(file); },
      [](I file, I) { return invalidateProvider(file), std::string(); },
      [](I file, I) { return file.flushFilesystem(), std::string(); }};
  for (const List list :
       {&StorageItem::listAll, &StorageItem::listFiles, &StorageItem::listFolders, &StorageItem::listAllNamesOnly,
        &StorageItem::listFilesNamesOnly, &StorageItem::listFoldersNamesOnly, &StorageItem::listAllRecursive,
        &StorageItem::listAllRecursiveNamesOnly})
    for (const auto* wildcard : {u"", u"*.x", u"d*"})
      reads.emplace_back([list, wildcard](I, I folder) { return listed(folder.getParent(), list, wildcard); });
  for (std::size_t i = 0; i < reads.size(); ++i) {
    SCOPED_TRACE(i);
    const auto expected = reads[i](direct(u"a.x"), direct(u"d"));
    const auto calls = faults->calls();
    faults->clear();
    EXPECT_EQ(reads[i](shown(u"a.x"), shown(u"d")), expected);
    EXPECT_EQ(faults->calls(), calls);
    EXPECT_FALSE(calls.empty());
    faults->clear();
  }
}

TEST_F(ReadOnlyFilterTest, RefusesWhateverWritesBeforeTheStoreIsAsked) {
  const auto file = shown(u"a.x").getLocation();
  const StorageIRI folder(u"READONLY+memory:///d");
  const StorageIRI other = shown(u"new").getLocation();
  const auto over = ReplacementPolicy::Overwrite;
  const std::vector<std::pair<StorageIRI, std::function<void()>>> writes{
      {other, [&] { view->createFile(other); }},
      {other, [&] { view->createFolder(other); }},
      {other, [&] { view->createFolderRecursive(other); }},
      {file, [&] { view->removeFile(file); }},
      {folder, [&] { view->removeFolder(folder); }},
      {folder, [&] { view->removeFolderRecursively(folder); }},
      {file, [&] { view->moveFile(file, other, over); }},
      {folder, [&] { view->moveFolder(folder, other, over); }},
      {file, [&] { view->copyFile(file, other, over); }},
      {file, [&] { view->copyFileAtomic(file, other, over, [] { return InterruptSignal::Continue; }); }},
      {file, [&] { view->openStream(file, {}); }},
      {other, [&] { view->openTransactionalStream(other, {}); }},
      {file, [&] { view->setLastModified(file, boost::posix_time::ptime(boost::gregorian::date(2020, 1, 1))); }},
      {file, [&] { view->setWritable(file, false); }},
      {file, [&] { view->truncateToSize(file, 0); }}};
  for (std::size_t i = 0; i < writes.size(); ++i) {
    SCOPED_TRACE(i);
    const auto failure = thrownBy(writes[i].second);
    EXPECT_EQ(failure.getErrorCode(), ErrorCode::ReadOnlyProvider);
    EXPECT_EQ(failure.getStorageIRI(), writes[i].first);
  }
  EXPECT_EQ(faults->calls(), std::vector<std::string>());
  for (const auto feature : {ExtendedFeature::AtomicFileCopy, ExtendedFeature::RecursiveFolderRemoval})
    EXPECT_FALSE(view->hasFeature(feature));
}

TEST_F(ReadOnlyFilterTest, PutsThePrefixOnLocationsThatComeOut) {
  EXPECT_EQ(view->getCanonicalLocation(StorageIRI(u"ReadOnly+Memory:/d/../a%2Ex")), shown(u"a.x").getLocation());
  const StorageIRI missing(u"Readonly+memory:/none/x");
  const auto failure = thrownBy([&] { view->getFileAttributes(missing); });
  EXPECT_EQ(failure.getErrorCode(), ErrorCode::ResourceNotFound);
  EXPECT_EQ(failure.getStorageIRI(), missing);
  EXPECT_EQ(failure.getExceptionContextsString(), u"memory");
  EXPECT_NE(std::string(failure.what()).find("\"Readonly+memory:///none/x\""), std::string::npos) << failure.what();

  const auto entries = shown(u"d").listAll(u"");
  faults->fail(testing::Operation::ListNext, 2, ErrorCode::IOError);
  entries->next();
  EXPECT_EQ(thrownBy([&] { entries->next(); }).getStorageIRI(), shown(u"d").getLocation());

  for (const auto* foreign : {u"memory:///a.x", u"other+memory:///a.x", u"file:///a.x"})
    EXPECT_EQ(thrownBy([&] { view->fileExists(StorageIRI(foreign)); }).getErrorCode(), ErrorCode::InvalidLocation);
  try {
    shown(u"d").publishFolderEvents([](auto&&...) {}, allKinds, RecursiveFileWatching::DirectOnly);
    ADD_FAILURE() << "stores in memory have no events";
  } catch (const ChangeEventsNotSupportedException& refused) {
    EXPECT_EQ(refused.getStorageIRI(), shown(u"d").getLocation());
  }
}

TEST_F(ReadOnlyFilterTest, IsCopiedFromButNotOntoItself) {
  auto registry = makeDefaultRegistry();
  const auto a = registry.item(u"memory:///a");
  put(a, "content");
  const auto source = registry.item(u"readonly+memory:///a");
  for (const auto policy : {TransactionPolicy::Atomic, TransactionPolicy::NonAtomic}) {
    const CopyFileOptions options{.replacementPolicy = ReplacementPolicy::Overwrite, .transactionPolicy = policy};
    const auto copy = registry.item(u"memory://other/b");
    source.copyFile(copy, options);
    EXPECT_EQ(contentOf(copy), "content");
    EXPECT_EQ(thrownBy([&] { source.copyFile(a, options); }).getErrorCode(), ErrorCode::InvalidLocation);
    EXPECT_EQ(contentOf(a), "content");
    EXPECT_EQ(thrownBy([&] { copy.copyFile(registry.item(u"readonly+memory:///c"), options); }).getErrorCode(),
              ErrorCode::ReadOnlyProvider);
  }
}

TEST_F(ReadOnlyFilterTest, TellsFilesApartWhereTheStoreDoesNot) {
  const auto primitive = std::make_shared<testing::PrimitiveProvider>(store);
  const auto views = {ReadOnlyFilter().buildProvider(primitive, u"one"),
                      ReadOnlyFilter().buildProvider(primitive, u"two")};
  std::vector<std::u16string> identities;
  for (const auto* location : {u"+memory:///a.x", u"+memory:///d/b.x"})
    for (std::size_t i = 0; i < 2; ++i)
      identities.push_back(dynamic_cast<const extensions::IFileIdentity&>(*views.begin()[i])
                               .getFileIdentity(StorageIRI((i == 0 ? u"one" : u"two") + std::u16string(location))));
  EXPECT_EQ(identities[0], identities[1]);
  EXPECT_EQ(identities[2], identities[3]);
  EXPECT_NE(identities[0], identities[2]);
}

TEST_F(ReadOnlyFilterTest, PollsByItself) {
  const auto folder = shown(u"d");
  const EventRecorder recorder;
  folder.startChangePollingMechanism(recorder.callback(), allKinds, 1ms, RecursiveChangePolling::Recursive);
  direct(u"d/new").createFile();
  EXPECT_TRUE(recorder.waitFor([&](const ChangeEvent& event) {
    return event.kind == events::Kind::EntryAdded && event.watched == folder.getLocation() &&
           event.subject == shown(u"d/new").getLocation();
  }));
  view->shutdown();
  recorder.take();
  direct(u"d/new").removeFile();
  EXPECT_TRUE(recorder.take().empty()) << "polling has ended";
}

TEST(ReadOnlyEventsTest, PassesNativeEventsOnForAsLongAsItLives) {
  auto name = (std::filesystem::temp_directory_path() / "foundation-registry-XXXXXX").string();
  ASSERT_NE(mkdtemp(name.data()), nullptr);
  const std::u16string path(name.begin(), name.end());
  const auto registry = makeDefaultRegistry();
  const auto direct = registry.item(u"file://" + path);
  const EventRecorder recorder;
  const EventRecorder later;
  const auto isOf = [](const StorageIRI& watched, const StorageItem& subject) {
    return [watched, location = subject.getLocation()](const ChangeEvent& event) {
      return event.watched == watched && event.subject == location;
    };
  };
  {
    const auto shown = registry.item(u"readonly+file://" + path);
    shown.publishFolderEvents(recorder.callback(), allKinds, RecursiveFileWatching::DirectOnly);
    StorageItem(direct, u"a").createFile();
    EXPECT_TRUE(recorder.waitFor(isOf(shown.getLocation(), {shown, u"a"})));
    shown.stopPublishingFolderEvents();
    const StorageItem file(shown, u"b");
    file.publishFileEvents(recorder.callback(), allKinds);
    StorageItem(direct, u"b").createFile();
    EXPECT_TRUE(recorder.waitFor(isOf(file.getParent().getLocation(), file)));
    shown.publishFolderEvents(recorder.callback(), allKinds, RecursiveFileWatching::DirectOnly);
  }
  // Were the view's subscription still in force, this one would be dropped.
  direct.publishFolderEvents(later.callback(), allKinds, RecursiveFileWatching::DirectOnly);
  StorageItem(direct, u"c").createFile();
  EXPECT_TRUE(later.waitFor(isOf(direct.getLocation(), {direct, u"c"})));
  std::filesystem::remove_all(name);
}

}  // namespace
}  // namespace foundation::storage::registry
