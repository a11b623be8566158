// What becomes of the entries of an archive when they are changed, and the archive is written.

#include "laws/ArchiveLaws.h"
#include "support/TarBuilder.h"
#include "support/ZipBuilder.h"

#include <foundation/storage/backend/support/InvalidOptionException.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/testing/FaultyProvider.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <functional>
#include <sys/resource.h>

namespace foundation::storage::backend::archive {
namespace {

using namespace provider;
using namespace testing;
using Contents = std::map<std::string, std::string>;

ZipEntry file(const std::string& name) { return {.name = name, .content = "x"}; }
ZipEntry folder(const std::string& name) { return {.name = name, .mode = 040755}; }
ZipEntry link(const std::string& name, const std::string& target) {
  return {.name = name, .content = target, .mode = 0120777};
}

void write(const StorageItem& item, const std::string& content) {
  const auto stream = item.openStream({});
  stream->write(content.data(), static_cast<std::int64_t>(content.size()));
  stream->close();
}

StorageIRI locationOf(const StorageItem& item) { return item.getLocation(); }

/// The files that are shown, by their paths.
Contents contentsOf(const PlacedArchive& archive) {
  Contents contents;
  for (const auto& entry : laws::seenArchive(archive.root()).entries)
    if (entry.isWhole)
      contents[fl::i18n::to_string(entry.path)] = entry.content;
  return contents;
}

TEST(ArchiveChangesTest, MovesNoFolderIntoItselfThroughALink) {
  const PlacedArchive archive(ArchiveFormat::Zip, zip({file("a/b/f"), link("l", "a"), link("a/b/up", "..")}));
  for (const char* destination : {"l/c", "l/b/c", "l/b/up/c"}) {
    SCOPED_TRACE(destination);
    const auto location = archive.at(destination).getLocation();
    EXPECT_EQ(
        laws::archiveFailureAt(location, [&] { archive.at("a").moveFolder(location, ReplacementPolicy::Overwrite); }),
        ErrorCode::InvalidLocation);
    EXPECT_TRUE(archive.at("a/b/f").fileExists());
  }
  archive.at("a/b").moveFolder(locationOf(archive.at("l/c")), ReplacementPolicy::Overwrite);
  EXPECT_TRUE(archive.at("a/c/f").fileExists());
}

TEST(ArchiveChangesTest, ServesNoOtherArchive) {
  const PlacedArchive archive(ArchiveFormat::Zip, zip({file("a"), folder("f/")}));
  for (const char* text : {"zip:memory:///other.zip!/b", "tar:memory:///a.zip!/b", "zip:zip:memory:///a.zip!/x!/b",
                           "zip:file:///a.zip!/b", "memory:///b"}) {
    SCOPED_TRACE(text);
    const StorageIRI elsewhere(fl::i18n::to_ustring(text));
    const auto refused = [&](const auto& action) { return laws::archiveFailureAt(elsewhere, action); };
    const auto policy = ReplacementPolicy::Overwrite;
    EXPECT_EQ(refused([&] { archive.at("a").moveFile(elsewhere, policy); }), ErrorCode::InvalidLocation);
    EXPECT_EQ(refused([&] { archive.at("f").moveFolder(elsewhere, policy); }), ErrorCode::InvalidLocation);
    EXPECT_EQ(refused([&] { StorageItem(archive.root(), elsewhere).createFile(); }), ErrorCode::InvalidLocation);
  }
  EXPECT_EQ(contentsOf(archive), (Contents{{"a", "x"}}));
}

TEST(ArchiveChangesTest, CopiesOntoACopy) {
  const PlacedArchive archive(ArchiveFormat::Zip, zip({file("a"), link("l", "a")}));
  archive.at("a").copyFile(archive.at("b"), ReplacementPolicy::Preserve);
  archive.at("a").copyFile(archive.at("b"), ReplacementPolicy::Overwrite);
  archive.root().flushFilesystem();
  EXPECT_EQ(contentsOf(archive.placedAnew()).at("b"), "x");
  for (const char* same : {"a", "l"})
    EXPECT_EQ(laws::archiveFailureAt(locationOf(archive.at(same)),
                                     [&] { archive.at("a").copyFile(archive.at(same), ReplacementPolicy::Overwrite); }),
              ErrorCode::InvalidLocation)
        << same;
}

TEST(ArchiveChangesTest, NothingHiddenTakesThePlaceOfWhatIsNew) {
  struct Case {
    const char* name;
    std::vector<ZipEntry> entries;
    void (*change)(const PlacedArchive&);
  };
  const Case cases[] = {
      {"a folder anew",
       {folder("x/"), file("x")},
       [](const PlacedArchive& archive) {
         archive.at("x").removeFolder();
         archive.at("x").createFolder();
         write(archive.at("x/new"), "mine");
       }},
      {"a file moved there",
       {{.name = "q", .content = "mine"}, folder("x/"), file("x")},
       [](const PlacedArchive& archive) {
         archive.at("x").removeFolder();
         archive.at("q").moveFile(locationOf(archive.at("x")), ReplacementPolicy::Preserve);
       }},
      {"a folder instead of a file",
       {file("x"), file("x/y")},
       [](const PlacedArchive& archive) {
         archive.at("x").removeFile();
         archive.at("x").createFolder();
         write(archive.at("x/z"), "mine");
       }},
      {"nothing",
       {file("x"), file("x/y"), file("../x")},
       [](const PlacedArchive& archive) { archive.at("x").removeFile(); }},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    const PlacedArchive archive(ArchiveFormat::Zip, zip(each.entries));
    each.change(archive);
    const auto shown = contentsOf(archive);
    archive.root().flushFilesystem();
    EXPECT_EQ(contentsOf(archive), shown);
    EXPECT_EQ(contentsOf(archive.placedAnew()), shown);
  }
}

TEST(ArchiveChangesTest, CountsWhatIsHiddenAmongTheEntriesThatAreWritten) {
  const PlacedArchive archives[] = {{ArchiveFormat::Zip, zip({file("a"), file("../b")}), {{"max-entries", 2}}},
                                    {ArchiveFormat::Tar, tar({{.name = "a"}, {.name = "../b"}}), {{"max-entries", 2}}}};
  for (const auto& archive : archives) {
    write(archive.at("c"), "x");
    EXPECT_EQ(laws::archiveFailureAt(locationOf(archive.root()), [&] { archive.root().flushFilesystem(); }),
              ErrorCode::FileTooLarge);
    EXPECT_TRUE(archive.placedAnew().at("a").fileExists());
  }
}

/// Lets each call of the store fail while an archive in `container` is written, and writes it again.
void expectToGoOn(const StorageItem& container, Faults& faults) {
  write(container, zip({file("a")}));
  const ArchiveProviderFactory zips(ArchiveFormat::Zip);
  const StorageItem archive(zips.buildProvider(container), StorageIRI(u"zip", container.getLocation(), u"/"));
  for (std::size_t call = 1; call < 40; ++call) {
    SCOPED_TRACE(call);
    write(StorageItem(archive, u"b"), std::to_string(call));
    faults.failAny(call, ErrorCode::IOError);
    laws::archiveFailureAt(archive.getLocation(), [&] { archive.flushFilesystem(); });
    faults.clear();
    write(StorageItem(archive, u"c"), std::to_string(call));
    EXPECT_EQ(laws::archiveFailureAt(archive.getLocation(), [&] { archive.flushFilesystem(); }), std::nullopt);
    EXPECT_EQ(wholeContent(StorageItem(archive, u"b")), std::to_string(call));
  }
}

TEST(ArchiveChangesTest, GoesOnWhenTheStoreFailsWhileTheArchiveIsWritten) {
  const auto faults = std::make_shared<Faults>();
  const StorageIRI root(u"memory:///");
  const StorageItem store(
      std::make_shared<FaultyProvider>(backend::memory::MemoryProviderFactory().buildProvider(root), faults), root);
  expectToGoOn(StorageItem(store, u"a.zip"), *faults);
  const StorageItem outer(store, u"o.zip");
  write(outer, zip({file("a")}));
  for (const char* commit : {"on-flush", "on-change"}) {
    SCOPED_TRACE(commit);
    ArchiveProviderFactory zips(ArchiveFormat::Zip);
    boost::property_tree::ptree options;
    options.put("commit", commit);
    zips.configure(options);
    const StorageItem around(zips.buildProvider(outer), StorageIRI(u"zip", outer.getLocation(), u"/"));
    expectToGoOn(StorageItem(around, u"i.zip"), *faults);
  }
}

/// As much of something as a process may have (getrlimit(2)), for as long as this lives.
class Limited {
 public:
  using Resource = decltype(RLIMIT_NOFILE);
  Limited(Resource resource, rlim_t most) : resource_(resource) {
    getrlimit(resource_, &before_);
    const rlimit few{most, before_.rlim_max};
    setrlimit(resource_, &few);
  }
  ~Limited() { setrlimit(resource_, &before_); }
  Limited(const Limited&) = delete;
  Limited& operator=(const Limited&) = delete;

 private:
  const Resource resource_;
  rlimit before_{};
};

TEST(ArchiveChangesTest, KeepsMoreLargeFilesThanThereAreDescriptors) {
  const Limited few(RLIMIT_NOFILE, 64);
  const PlacedArchive archive(ArchiveFormat::Zip, "");
  const std::string large(1 << 20, 'x');
  for (int at = 0; at < 80; ++at)
    write(archive.at(std::to_string(at)), large + std::to_string(at));
  archive.root().flushFilesystem();
  for (int at = 0; at < 80; ++at)
    ASSERT_TRUE(wholeContent(archive.at(std::to_string(at))) == large + std::to_string(at)) << at;
}

/// The code of the failure of a stream that gets `bytes`.
std::optional<ErrorCode> codeOfWriting(const StorageItem& item, const std::string& bytes) {
  const auto stream = item.openStream({});
  try {
    stream->write(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    stream->close();
  } catch (const ByteStreamWriteFailure& failure) {
    EXPECT_NE(std::string(failure.what()).find(fl::i18n::to_string(item.getLocation().toString())), std::string::npos);
    return failure.getErrorCode();
  }
  return std::nullopt;
}

/// Large files wait in a temporary file until the archive is written.
TEST(ArchiveChangesTest, LosesNothingWhereThereIsNoRoomForTemporaryFiles) {
  const std::string small(1000, 's'), large(5 << 20, 'x');
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  const PlacedArchive archive(ArchiveFormat::Zip, zip({file("kept")}));
  write(archive.at("before"), small);
  std::optional<ErrorCode> whenFull;
  {
    const Limited full(RLIMIT_FSIZE, 2 << 20);
    whenFull = codeOfWriting(archive.at("large"), large);
  }
  std::signal(SIGXFSZ, before);
  EXPECT_EQ(whenFull, ErrorCode::NoSpaceLeft);
  EXPECT_EQ(wholeContent(archive.at("large")), "");
  archive.at("large").truncateToSize(3 << 20);
  EXPECT_TRUE(wholeContent(archive.at("large")) == std::string(3 << 20, '\0')) << "it shows what has failed";
  const auto expected = contentsOf(archive);
  EXPECT_EQ(expected.at("before"), small);
  archive.root().flushFilesystem();
  EXPECT_TRUE(contentsOf(archive.placedAnew()) == expected);
}

TEST(ArchiveChangesTest, NeedsAFolderForTemporaryFilesOnlyForLargeOnes) {
  const char* const set = std::getenv("TMPDIR");
  const auto before = set != nullptr ? std::optional<std::string>(set) : std::nullopt;
  const PlacedArchive archive(ArchiveFormat::Zip, zip({file("kept")}));
  setenv("TMPDIR", "/no/such/folder", 1);
  const auto ofSmall = codeOfWriting(archive.at("small"), "s");
  const auto ofLarge = codeOfWriting(archive.at("large"), std::string(2 << 20, 'x'));
  before ? setenv("TMPDIR", before->c_str(), 1) : unsetenv("TMPDIR");
  EXPECT_EQ(ofSmall, std::nullopt);
  EXPECT_EQ(ofLarge, ErrorCode::IOError);
  EXPECT_EQ(contentsOf(archive), (Contents{{"kept", "x"}, {"large", ""}, {"small", "s"}}));
}

TEST(ArchiveChangesTest, CopiesNoEntryOfAnArchiveThatIsWrittenMeanwhile) {
  const PlacedArchive archive(ArchiveFormat::Zip, zip({file("first"), {.name = "a", .content = "content"}}));
  const auto target = archive.at("b");
  const auto copy = [&](const std::function<void()>& meanwhile) {
    return laws::archiveFailureAt(locationOf(target), [&] {
      archive.at("a").copyFile(target, {ReplacementPolicy::Overwrite, TransactionPolicy::Atomic, [&] {
                                          meanwhile();
                                          return InterruptSignal::Continue;
                                        }});
    });
  };
  EXPECT_EQ(copy([&] {
              archive.at("first").removeFile();
              archive.root().flushFilesystem();
            }),
            ErrorCode::ResourceInUse);
  EXPECT_EQ(contentsOf(archive), (Contents{{"a", "content"}}));
  EXPECT_EQ(copy([] {}), std::nullopt);
  EXPECT_EQ(contentsOf(archive), (Contents{{"a", "content"}, {"b", "content"}}));
}

TEST(ArchiveChangesTest, ChangesNothingThatIsNotWritable) {
  const auto bytes = zip({folder("top/"),
                          {.name = "top/locked/", .mode = 040555},
                          folder("top/locked/empty/"),
                          file("top/locked/file"),
                          file("other"),
                          {.name = "only-read", .content = "x", .mode = 0100444}});
  const PlacedArchive archive(ArchiveFormat::Zip, bytes);
  using I = const StorageItem&;
  constexpr auto over = ReplacementPolicy::Overwrite;
  const auto other = archive.at("other");
  const struct {
    const char* path;  ///< of what is refused
    std::function<void(I)> change;
  } cases[] = {
      {"top/locked/new", [](I item) { item.createFile(); }},
      {"top/locked/new", [](I item) { item.createFolder(); }},
      {"top/locked/file", [](I item) { item.removeFile(); }},
      {"top/locked/empty", [](I item) { item.removeFolder(); }},
      {"top", [](I item) { item.removeFolderRecursively(); }},
      {"top/locked/file", [&](I item) { item.moveFile(locationOf(archive.at("moved")), over); }},
      {"top/locked/other", [&](I item) { other.moveFile(locationOf(item), over); }},
      {"top/locked/other", [&](I item) { other.copyFile(item, over); }},
      {"only-read", [&](I item) { other.copyFile(item, over); }},
      {"only-read", [](I item) { item.truncateToSize(0); }},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(i);
    const auto item = archive.at(cases[i].path);
    EXPECT_EQ(laws::archiveFailureAt(locationOf(item), [&] { cases[i].change(item); }), ErrorCode::PermissionDenied);
  }
  archive.root().flushFilesystem();
  EXPECT_EQ(archive.bytes(), bytes) << "there was nothing to write";
}

TEST(ArchiveChangesTest, TakesNoFolderForAnArchive) {
  const StorageIRI root(u"memory:///");
  const StorageItem folder(StorageItem(backend::memory::MemoryProviderFactory().buildProvider(root), root), u"a.zip");
  folder.createFolder();
  const StorageItem archive(ArchiveProviderFactory(ArchiveFormat::Zip).buildProvider(folder),
                            StorageIRI(u"zip", folder.getLocation(), u"/"));
  const std::function<void()> operations[] = {[&] { archive.listAll(u""); }, [&] { archive.createFolder(); },
                                              [&] { StorageItem(archive, u"new").createFile(); }};
  for (const auto& operation : operations)
    EXPECT_EQ(laws::archiveFailureAt(archive.getLocation(), operation), ErrorCode::InvalidLocation);
  EXPECT_TRUE(folder.folderExists());
}

TEST(ArchiveChangesTest, RefusesOptionsThatMakeNoSense) {
  const std::pair<std::string, std::string> cases[] = {
      {"commit", "later"}, {"max-ratio", "0"}, {"max-nesting", "0"}, {"max-entries", "many"}, {"speed", "high"}};
  const PlacedArchive archive(ArchiveFormat::Zip, "");
  for (const auto& option : cases) {
    SCOPED_TRACE(option.first);
    boost::property_tree::ptree options;
    options.put(option.first, option.second);
    try {
      archive.root().configure(options);
      ADD_FAILURE() << "it is taken";
    } catch (const support::InvalidOptionException& refused) {
      EXPECT_EQ(refused.getKey(), option.first);
    }
  }
}

/// A zip has 16 bits for the size of a name.
TEST(ArchiveChangesTest, TellsWhichNameIsTooLongForAZip) {
  const PlacedArchive archive(ArchiveFormat::Zip, zip({file("kept")}));
  const std::string longest(65'535, 'n');
  write(archive.at(longest), "fits");
  write(archive.at(longest + "n"), "too long");
  EXPECT_EQ(laws::archiveFailureAt(locationOf(archive.root()), [&] { archive.root().flushFilesystem(); }),
            ErrorCode::InvalidLocation);
  EXPECT_EQ(archive.bytes(), zip({file("kept")}));
  archive.at(longest + "n").removeFile();
  archive.root().flushFilesystem();
  EXPECT_EQ(contentsOf(archive.placedAnew()), (Contents{{"kept", "x"}, {longest, "fits"}}));
}

TEST(ArchiveChangesTest, GapsInLargeFilesAreZerosWhateverWasThereBefore) {
  const PlacedArchive archive(ArchiveFormat::Zip, "");
  const std::string large(3 << 20, 'x');
  for (const char* name : {"removed", "cut", "grown"})
    write(archive.at(name), large);
  archive.at("removed").removeFile();
  for (const std::uint64_t size : {std::uint64_t{300'001}, std::uint64_t{4 << 20}})
    archive.at("cut").truncateToSize(size);
  archive.at("grown").truncateToSize(5 << 20);
  const auto stream = archive.at("new").openStream({.append = ByteStreamAppend::Overwrite});
  stream->seek(2'000'000, std::ios_base::beg);
  stream->write("end", 3);
  stream->close();
  const auto zeros = [](std::size_t count) { return std::string(count, '\0'); };
  for (const bool isWritten : {false, true}) {
    EXPECT_TRUE(wholeContent(archive.at("cut")) == large.substr(0, 300'001) + zeros((4 << 20) - 300'001)) << isWritten;
    EXPECT_TRUE(wholeContent(archive.at("grown")) == large + zeros(2 << 20)) << isWritten;
    EXPECT_TRUE(wholeContent(archive.at("new")) == zeros(2'000'000) + "end") << isWritten;
    archive.root().flushFilesystem();
  }
}

}  // namespace
}  // namespace foundation::storage::backend::archive
