// What becomes of the entries of an archive when they are changed, and the archive is written.

#include "laws/ArchiveLaws.h"
#include "support/TarBuilder.h"
#include "support/ZipBuilder.h"

#include <foundation/storage/testing/FaultyProvider.h>

#include <gtest/gtest.h>

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

/// As many descriptors as a process may have, for as long as this lives.
class FewDescriptors {
 public:
  explicit FewDescriptors(rlim_t most) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit few{most, before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
  }
  ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
};

TEST(ArchiveChangesTest, KeepsMoreLargeFilesThanThereAreDescriptors) {
  const FewDescriptors few(64);
  const PlacedArchive archive(ArchiveFormat::Zip, "");
  const std::string large(1 << 20, 'x');
  for (int at = 0; at < 80; ++at)
    write(archive.at(std::to_string(at)), large + std::to_string(at));
  archive.root().flushFilesystem();
  for (int at = 0; at < 80; ++at)
    ASSERT_TRUE(wholeContent(archive.at(std::to_string(at))) == large + std::to_string(at)) << at;
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
