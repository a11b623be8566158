#include "support/MemoryProvider.h"
#include "support/RecordingProvider.h"
#include "support/Thrown.h"
#include <foundation/storage/provider/IReadOnlyProvider.h>
#include <foundation/storage/provider/InvalidateProvider.h>
#include <foundation/storage/provider/StorageItem.h>

#include <boost/property_tree/ptree.hpp>
#include <gtest/gtest.h>

#include <functional>
#include <sstream>

namespace foundation::storage::provider {
namespace {

using test::MemoryProvider;
using test::RecordingProvider;
using Log = std::vector<std::string>;

const StorageIRI a(u"s:///d/a");
const StorageIRI b(u"s:///d/b");
const std::u16string all;
const std::u16string some(u"*.ä");

TEST(Provider, ForwardsToItsCounterpartsAndSoDoesAnItem) {
  const auto provider = std::make_shared<RecordingProvider>();
  const StorageItem item(provider, a);
  const auto expect = [&](const std::string& name, const std::string& more, auto ofProvider, auto ofItem,
                          const auto&... arguments) {
    const auto call = name + " s:///d/a" + more;
    std::invoke(ofProvider, *provider, a, arguments...);
    EXPECT_EQ(provider->take(), call);
    std::invoke(ofItem, item, arguments...);
    EXPECT_EQ(provider->take(), call) << "by the item";
  };
  const auto expectListing = [&](const std::string& name, auto ofProvider, auto ofItem) {
    expect(name, "", ofProvider, ofItem, all);
    expect(name + "Wildcards", " *.ä", ofProvider, ofItem, some);
  };
  using P = IProvider;
  using I = StorageItem;
  const ByteStreamOpenOptions options{ByteStreamAccess::ReadWrite};
  const boost::posix_time::ptime time(boost::gregorian::date(2024, 2, 29), boost::posix_time::seconds(5));
  const ChangeCallback callback = [](const auto&, const auto&, const auto&, const auto&, const auto&) {};
  const std::vector<events::Kind> kinds(3);
  std::ostringstream written;
  written << options;

  expect("CreateFile", "", &P::createFile, &I::createFile);
  expect("CreateFolder", "", &P::createFolder, &I::createFolder);
  expect("CreateFolderRecursive", "", &P::createFolderRecursive, &I::createFolderRecursive);
  expect("FileExists", "", &P::fileExists, &I::fileExists);
  expect("FolderExists", "", &P::folderExists, &I::folderExists);
  expect("Exists", "", &P::exists, &I::exists);
  expect("ExistsExtended", "", &P::existsExtended, &I::existsExtended);
  expect("RemoveFile", "", &P::removeFile, &I::removeFile);
  expect("RemoveFolder", "", &P::removeFolder, &I::removeFolder);
  expect("RemoveFolderRecursively", "", &P::removeFolderRecursively, &I::removeFolderRecursively);
  expect("MoveFile", " s:///d/b ReplacementPolicy::Clobber", &P::moveFile, &I::moveFile, b, ReplacementPolicy::Clobber);
  expect("MoveFolder", " s:///d/b ReplacementPolicy::Preserve", &P::moveFolder, &I::moveFolder, b,
         ReplacementPolicy::Preserve);
  expect("GetFileAttributes", "", &P::getFileAttributes, &I::getFileAttributes);
  expect("GetFolderAttributes", "", &P::getFolderAttributes, &I::getFolderAttributes);
  expect("GetExtendedAttributes", "", &P::getExtendedAttributes, &I::getExtendedAttributes);
  expect("GetCanonicalLocation", "", &P::getCanonicalLocation, &I::getCanonicalLocation);
  expect("GetFilenameSensitivity", "", &P::getFilenameSensitivity, &I::getFilenameSensitivity);
  expect("GetPathComparator", "", &P::getPathComparator, &I::getPathComparator);
  expect("GetProviderCacheUsage", "", &P::getProviderCacheUsage, &I::getProviderCacheUsage);
  expect("GetProviderStorageInfo", "", &P::getProviderStorageInfo, &I::getProviderStorageInfo);
  expect("SetLastModified", " 5s", &P::setLastModified, &I::setLastModified, time);
  expect("SetWritable", " 1", &P::setWritable, &I::setWritable, true);
  expect("TruncateToSize", " 6442450944", &P::truncateToSize, &I::truncateToSize, 6442450944u);
  expect("OpenReadOnlyStream", "", &P::openReadOnlyStream, &I::openReadOnlyStream);
  expect("OpenStream", " " + written.str(), &P::openStream, &I::openStream, options);
  expect("OpenTransactionalStream", " " + written.str(), &P::openTransactionalStream, &I::openTransactionalStream,
         options);
  expectListing("ListAll", &P::listAll, &I::listAll);
  expectListing("ListFiles", &P::listFiles, &I::listFiles);
  expectListing("ListFolders", &P::listFolders, &I::listFolders);
  expectListing("ListAllNamesOnly", &P::listAllNamesOnly, &I::listAllNamesOnly);
  expectListing("ListFilesNamesOnly", &P::listFilesNamesOnly, &I::listFilesNamesOnly);
  expectListing("ListFoldersNamesOnly", &P::listFoldersNamesOnly, &I::listFoldersNamesOnly);
  expectListing("ListAllRecursive", &P::listAllRecursive, &I::listAllRecursive);
  expectListing("ListAllRecursiveNamesOnly", &P::listAllRecursiveNamesOnly, &I::listAllRecursiveNamesOnly);
  expect("PublishFileEventsFor", " callback 3 kinds", &P::publishFileEventsFor, &I::publishFileEvents, callback, kinds);
  expect("PublishFolderEventsFor", " callback 3 kinds 1", &P::publishFolderEventsFor, &I::publishFolderEvents, callback,
         kinds, RecursiveFileWatching::DirectOnly);
  item.stopPublishingFileEvents();
  EXPECT_EQ(provider->take(), "StopPublishingEventsFor s:///d/");
  expect("StopPublishingEventsFor", "", &P::stopPublishingFolderEventsFor, &I::stopPublishingFolderEvents);
  expect("StartChangePollingMechanism", " callback 3 kinds 250ms 1", &P::startChangePollingMechanism,
         &I::startChangePollingMechanism, callback, kinds, std::chrono::milliseconds(250),
         RecursiveChangePolling::DirectOnly);
  expect("StopChangePollingMechanism", "", &P::stopChangePollingMechanism, &I::stopChangePollingMechanism);
}

TEST(Provider, HandsOnWhatItsCounterpartsAnswer) {
  RecordingProvider provider;
  EXPECT_TRUE(provider.fileExists(a) && provider.folderExists(a) && provider.hasFeature({}));
  EXPECT_EQ(provider.exists(a), ExistenceType::AsFolder);
  EXPECT_EQ(provider.existsExtended(a), ExistenceTypeExtended::SpecialFile);
  EXPECT_EQ(provider.getFileAttributes(a).getSize(), 7u);
  EXPECT_FALSE(provider.getFilenameSensitivity(a).isCaseSensitive);
  EXPECT_TRUE(provider.getExtendedAttributes(a).hasAttribute("key"));
  EXPECT_EQ(provider.getProviderStorageInfo(a).getSpaceOccupied(), 8u);
  EXPECT_EQ(provider.getProviderCacheUsage(a).getSpaceAvailable(), 9u);
  EXPECT_EQ(provider.getCanonicalLocation(a), a);
  provider.take();
  EXPECT_EQ(provider.copyFileAtomic(a, b, ReplacementPolicy::NoClobber, nullptr), TransactionStatus::Aborted);
  provider.copyFile(b, a, ReplacementPolicy::Overwrite);
  EXPECT_EQ(provider.take(),
            "CopyFileAtomic s:///d/a s:///d/b ReplacementPolicy::NoClobber no callback, "
            "CopyFile s:///d/b s:///d/a ReplacementPolicy::Overwrite");
}

/// Expects the refusal of each call, with the code and the location.
void expectRefusals(ErrorCode code, const std::vector<std::function<void()>>& calls, const StorageIRI& location = a) {
  for (std::size_t number = 0; number < calls.size(); ++number) {
    SCOPED_TRACE(number);
    EXPECT_EQ(test::textThrownBy<Exception>(calls[number]), Exception(code, location).what());
  }
}

TEST(Provider, RefusesWhatABackEndDoesNotOffer) {
  const MemoryProvider provider;
  expectRefusals(ErrorCode::UnsupportedOperation,
                 {
                     [&] { provider.removeFolderRecursively(a); },
                     [&] { provider.listAllRecursive(a, all); },
                     [&] { provider.listAllRecursive(a, some); },
                     [&] { provider.listAllRecursiveNamesOnly(a, all); },
                     [&] { provider.listAllRecursiveNamesOnly(a, some); },
                     [&] { provider.copyFileAtomic(a, b, ReplacementPolicy::Overwrite, nullptr); },
                     [&] { provider.setLastModified(a, {}); },
                     [&] { provider.setWritable(a, true); },
                     [&] { provider.getProviderStorageInfo(a); },
                 });
  EXPECT_FALSE(provider.hasFeature(ExtendedFeature::RecursiveFolderRemoval));
  EXPECT_FALSE(provider.hasFeature(ExtendedFeature::AtomicFileCopy));
  EXPECT_FALSE(provider.getProviderCacheUsage(a).getSpaceAvailable());
  const auto attributes = provider.getExtendedAttributes(a);
  EXPECT_TRUE(attributes.begin() == attributes.end());
  EXPECT_TRUE(provider.getFilenameSensitivity(a).isCaseSensitive);
  EXPECT_TRUE(provider.getFilenameSensitivity(a).isCasePreserving);
  EXPECT_EQ(provider.getCanonicalLocation(StorageIRI(u"s:///x/../y")).toString(), u"s:///y");
}

TEST(Provider, ListsUnfilteredWhereABackEndHasNoWildcards) {
  const MemoryProvider provider;
  const std::pair<decltype(&IProvider::listAll), std::u16string> cases[] = {
      {&IProvider::listAll, u"f.x|d|"},          {&IProvider::listFiles, u"f.x|"},
      {&IProvider::listFolders, u"d|"},          {&IProvider::listAllNamesOnly, u"f.x|d|"},
      {&IProvider::listFilesNamesOnly, u"f.x|"}, {&IProvider::listFoldersNamesOnly, u"d|"},
  };
  for (const auto& [operation, expected] : cases)
    for (const auto* wildcard : {u"", u"*.y"}) {
      std::u16string names;
      for (const auto entries = (provider.*operation)(a, wildcard); entries->hasNext();) {
        entries->next();
        names += entries->current().getName() + u"|";
      }
      EXPECT_EQ(names, expected);
    }
}

TEST(Provider, MovesNoFolderIntoItself) {
  const MemoryProvider provider;
  const StorageIRI below(u"s:///d/a/x/y");
  expectRefusals(ErrorCode::InvalidLocation, {[&] { provider.moveFolder(a, below, ReplacementPolicy::Overwrite); }},
                 below);
  EXPECT_EQ(provider.script().take(), Log{});
  provider.moveFolder(a, a, ReplacementPolicy::Overwrite);
  provider.moveFolder(below, a, ReplacementPolicy::Overwrite);
  EXPECT_EQ(provider.script().take(), (Log{"moveFolder /d/a", "moveFolder /d/a/x/y"}));
}

TEST(ReadOnlyProvider, RefusesEveryChange) {
  const test::BasicMemoryProvider<IReadOnlyProvider> provider;
  provider.put(u"/d/a", "abc");
  expectRefusals(ErrorCode::ReadOnlyProvider, {
                                                  [&] { provider.createFile(a); },
                                                  [&] { provider.createFolder(a); },
                                                  [&] { provider.createFolderRecursive(a); },
                                                  [&] { provider.removeFile(a); },
                                                  [&] { provider.removeFolder(a); },
                                                  [&] { provider.removeFolderRecursively(a); },
                                                  [&] { provider.moveFile(a, b, ReplacementPolicy::Overwrite); },
                                                  [&] { provider.moveFolder(a, b, ReplacementPolicy::Overwrite); },
                                                  [&] { provider.copyFile(a, b, ReplacementPolicy::Overwrite); },
                                                  [&] { provider.openStream(a, {}); },
                                                  [&] { provider.setLastModified(a, {}); },
                                                  [&] { provider.setWritable(a, false); },
                                                  [&] { provider.truncateToSize(a, 3); },
                                              });
  char buffer[4];
  EXPECT_EQ(provider.openReadOnlyStream(a)->read(buffer, 4), 3);
  EXPECT_TRUE(provider.listAll(a, all)->hasNext());
}

TEST(Provider, OpensStreamsThatKeepTheirPromises) {
  const MemoryProvider provider;
  provider.put(u"/d/a", "abc");
  char buffer[4];
  EXPECT_THROW(provider.openReadOnlyStream(a)->write("x", 1), ByteStreamWriteFailure);
  EXPECT_EQ(provider.openReadOnlyStream(a)->read(buffer, 4), 3);
  const auto keep = ByteStreamTruncate::PreserveExisting;
  EXPECT_EQ(provider.openStream(a, {.truncate = keep})->read(buffer, 4), -1);
  EXPECT_EQ(provider.openStream(a, {.access = ByteStreamAccess::ReadWrite, .truncate = keep})->read(buffer, 4), 3);
  EXPECT_EQ(provider.openStream(a, {})->write("x", 1), 1);
}

TEST(ProviderDefaults, CreateFoldersFromTheOutermostInwards) {
  const MemoryProvider provider;
  provider.createFolderRecursive(StorageIRI(u"s:///x/y/z"));
  provider.createFolderRecursive(StorageIRI(u"s:///x/y/v"));
  EXPECT_EQ(provider.script().take(),
            (Log{"createFolder /x", "createFolder /x/y", "createFolder /x/y/z", "createFolder /x/y/v"}));
  const StorageIRI root(u"s:///");
  const StorageIRI existing(u"s:///x/y");
  expectRefusals(ErrorCode::ResourceAlreadyExists, {[&] { provider.createFolderRecursive(root); }}, root);
  expectRefusals(ErrorCode::ResourceAlreadyExists, {[&] { provider.createFolderRecursive(existing); }}, existing);
  provider.script().take();
  provider.removeRoot();
  expectRefusals(
      ErrorCode::ResourceNotFound,
      {[&] { provider.createFolderRecursive(root); }, [&] { provider.createFolderRecursive(StorageIRI(u"s:/x/y")); }},
      root);
  EXPECT_EQ(provider.script().take(), Log{});
}

TEST(ProviderDefaults, ClassifyFilesBeforeFolders) {
  const MemoryProvider provider;
  provider.put(u"/d", "");
  provider.createFolder(StorageIRI(u"s:///d"));
  const std::tuple<const char16_t*, ExistenceType, ExistenceTypeExtended> cases[] = {
      {u"s:///d", ExistenceType::AsFile, ExistenceTypeExtended::RegularFile},
      {u"s:///", ExistenceType::AsFolder, ExistenceTypeExtended::RegularFolder},
      {u"s:///x", ExistenceType::AsNeither, ExistenceTypeExtended::None},
  };
  for (const auto& [location, plain, extended] : cases) {
    EXPECT_EQ(provider.exists(StorageIRI(location)), plain);
    EXPECT_EQ(provider.existsExtended(StorageIRI(location)), extended);
  }
}

TEST(ProviderDefaults, CopyThroughStreams) {
  std::string content(10'000, 'x');
  content[4096] = '\0';
  for (const auto policy : {ReplacementPolicy::Preserve, ReplacementPolicy::Overwrite, ReplacementPolicy::Clobber,
                            ReplacementPolicy::NoClobber})
    for (const bool exists : {false, true}) {
      const MemoryProvider provider;
      provider.put(u"/d/a", content);
      if (exists)
        provider.put(u"/d/b", std::string(20'000, 'o'));
      provider.script().mostPerWrite = 3000;
      if (exists && preservesExisting(policy)) {
        expectRefusals(ErrorCode::ResourceAlreadyExists, {[&] { provider.copyFile(a, b, policy); }}, b);
        EXPECT_EQ(provider.script().take(), Log{"fileExists /d/b"});
        EXPECT_EQ(provider.contentOf(u"/d/b")->size(), 20'000u);
      } else {
        provider.copyFile(a, b, policy);
        EXPECT_TRUE(*provider.contentOf(u"/d/b") == content);
        const auto log = provider.script().take();
        EXPECT_EQ(Log(log.begin(), log.begin() + 5),
                  (Log{"fileExists /d/b", "openReadOnly /d/a", "open /d/b 1001", "/d/a read 4096", "/d/b write 4096"}));
        EXPECT_EQ(Log(log.end() - 5, log.end() - 2), (Log{"/d/a read 4096", "/d/b close", "/d/a close"}));
      }
    }
}

TEST(ProviderDefaults, TellWhatStoppedACopy) {
  for (const auto* failing : {"/d/a read 4096", "/d/b write 3", "/d/b close", "/d/a close"}) {
    const MemoryProvider provider;
    provider.put(u"/d/a", "abc");
    provider.script().failing = failing;
    try {
      provider.copyFile(a, b, ReplacementPolicy::Overwrite);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const Exception& failure) {
      EXPECT_EQ(failure.getErrorCode(), ErrorCode::NoSpaceLeft);
      EXPECT_EQ(failure.getStorageIRI(), a);
      EXPECT_EQ(failure.getExceptionContextsString(), u"disk");
    }
    const auto log = provider.script().take();
    EXPECT_EQ(std::count_if(log.begin(), log.end(), [](const auto& line) { return line.ends_with("gone"); }), 2);
  }
}

TEST(ProviderDefaults, TruncateByAppendingOrReplacing) {
  std::string content;
  for (int i = 0; content.size() < 400'000; ++i)
    content += std::to_string(i);
  for (const std::size_t newSize : {0u, 1u, 131'072u, 300'000u, 399'999u, 400'000u, 700'001u})
    for (const std::int64_t mostPerWrite : {std::int64_t{1} << 40, std::int64_t{100'000}}) {
      SCOPED_TRACE(std::to_string(newSize) + " in writes of " + std::to_string(mostPerWrite));
      const MemoryProvider provider;
      provider.put(u"/d/a", content.substr(0, 400'000));
      provider.script().mostPerWrite = mostPerWrite;
      provider.truncateToSize(a, newSize);
      auto expected = content.substr(0, std::min(newSize, std::size_t{400'000}));
      expected.resize(newSize);
      EXPECT_TRUE(*provider.contentOf(u"/d/a") == expected);
      EXPECT_EQ(provider.countFiles(), 1u);
    }
}

TEST(ProviderDefaults, TruncateInChunks) {
  const MemoryProvider provider;
  provider.put(u"/d/a", "0123456789");
  provider.truncateToSize(a, 10);
  EXPECT_EQ(provider.script().take(), Log{});
  provider.truncateToSize(a, 300'000);
  EXPECT_EQ(provider.script().take(), (Log{"open /d/a 0110", "/d/a write 131072", "/d/a write 131072",
                                           "/d/a write 37846", "/d/a close", "/d/a gone"}));
  provider.truncateToSize(a, 0);
  auto log = provider.script().take();
  ASSERT_EQ(log.size(), 7u);
  EXPECT_EQ(log[1].rfind("open /d/a", 0), 0u) << log[1];
  EXPECT_EQ(log[1].size(), std::string("open /d/a").size() + 36 + std::string(" 0001").size()) << log[1];
  EXPECT_EQ(log[4], "moveOver /d/a");
  const StorageIRI missing(u"s:///d/missing");
  expectRefusals(ErrorCode::ResourceNotFound, {[&] { provider.truncateToSize(missing, 1); }}, missing);
}

TEST(ProviderDefaults, ComparePathsByCodeUnits) {
  const auto same = MemoryProvider().getPathComparator(a);
  const std::tuple<std::u16string, std::u16string, bool, bool> cases[] = {
      {u"", u"", true, true},
      {u"ABC", u"abc", false, true},
      {u"ÄЖ\U00010400", u"äж\U00010428", false, true},
      {u"a", u"ab", false, false},
      {u"ä", u"a\u0308", false, false},
      {u"ß", u"SS", false, false},
      {{0xD800}, {0xD800}, true, true},
      {{0xDC80}, {0xDC81}, false, false},
  };
  for (const auto& [one, other, sensitive, insensitive] : cases) {
    EXPECT_EQ(same(one, other, CaseModifier::None), sensitive);
    EXPECT_EQ(same(one, other, CaseModifier::Sensitive), sensitive);
    EXPECT_EQ(same(one, other, CaseModifier::InSensitive), insensitive);
  }
}

}  // namespace
}  // namespace foundation::storage::provider
