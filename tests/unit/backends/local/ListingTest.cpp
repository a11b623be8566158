// Listings of folders, small and large.

#include "TemporaryFolder.h"

#include <map>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

std::map<std::string, bool> namesAndKinds(IFolderEntryIterator& entries) {
  std::map<std::string, bool> found;
  while (entries.hasNext()) {
    entries.next();
    const auto entry = entries.current();
    EXPECT_TRUE(found.emplace(fl::i18n::to_string(entry.getName()), entry.isFile()).second);
  }
  return found;
}

class ListingTest : public LocalTest {};

TEST_F(ListingTest, WalksTreesWithoutFollowingLinks) {
  fs::create_directories(native("a/b"));
  fs::create_directory_symlink("..", native("a/b/up"));
  fs::create_symlink("nowhere", native("a/dangling"));
  put("a/b/file", "12345");
  const std::map<std::string, bool> all{
      {"a", false}, {"a/b", false}, {"a/b/up", false}, {"a/b/file", true}, {"a/dangling", true}};
  EXPECT_EQ(namesAndKinds(*folder.listAllRecursive(u"")), all);
  EXPECT_EQ(namesAndKinds(*folder.listAllRecursiveNamesOnly(u"")), all);
}

TEST_F(ListingTest, WalksOnPastFoldersThatVanishOrCannotBeRead) {
  for (const auto* name : {"gone", "locked", "open"}) {
    fs::create_directory(native(name));
    put(std::string(name) + "/file", "");
  }
  const auto entries = folder.listAllRecursiveNamesOnly(u"");
  for (int count = 0; count < 3; ++count)
    entries->next();
  fs::remove_all(native("gone"));
  ASSERT_EQ(chmod(native("locked").c_str(), 0), 0);
  const WithoutPrivileges nobody;
  std::vector<std::u16string> found;
  int refused = 0;
  for (bool isMore = true; isMore;)
    try {
      isMore = entries->hasNext();
      entries->next();
      if (isMore)
        found.push_back(entries->current().getName());
    } catch (const Exception& failure) {
      EXPECT_EQ(failure.getErrorCode(), ErrorCode::PermissionDenied);
      EXPECT_EQ(failure.getStorageIRI(), child(u"locked").getLocation());
      ++refused;
    }
  EXPECT_EQ(found, std::vector<std::u16string>{u"open/file"});
  EXPECT_EQ(refused, 1);
}

TEST_F(ListingTest, WalksDeepTreesWithOneFolderOpen) {
  std::u16string deep = u"d";
  for (int level = 1; level < 1200; ++level)
    deep += u"/d";
  child(deep).createFolderRecursive();
  std::size_t count = 0;
  for (const auto entries = folder.listAllRecursiveNamesOnly(u""); entries->hasNext(); ++count)
    entries->next();
  EXPECT_EQ(count, 1200u);
}

TEST_F(ListingTest, ListsFilesFoldersOrBoth) {
  put("file", "12345");
  put(".hidden", "");
  fs::create_directory(native("folder"));
  fs::create_symlink("file", native("to-file"));
  fs::create_directory_symlink("folder", native("to-folder"));
  fs::create_symlink("nowhere", native("dangling"));
  ASSERT_EQ(mkfifo(native("pipe").c_str(), 0600), 0);
  const std::map<std::string, bool> files{
      {"file", true}, {".hidden", true}, {"to-file", true}, {"dangling", true}, {"pipe", true}};
  const std::map<std::string, bool> folders{{"folder", false}, {"to-folder", false}};
  auto all = files;
  all.insert(folders.begin(), folders.end());
  EXPECT_EQ(namesAndKinds(*folder.listAll(u"")), all);
  EXPECT_EQ(namesAndKinds(*folder.listFiles(u"")), files);
  EXPECT_EQ(namesAndKinds(*folder.listFolders(u"")), folders);
  EXPECT_EQ(namesAndKinds(*folder.listAllNamesOnly(u"")), all);
  EXPECT_EQ(namesAndKinds(*folder.listFilesNamesOnly(u"")), files);
  EXPECT_EQ(namesAndKinds(*folder.listFoldersNamesOnly(u"")), folders);
  EXPECT_TRUE(namesAndKinds(*child(u"folder").listAll(u"")).empty());
}

TEST_F(ListingTest, GivesAttributesWithTheEntries) {
  put("file", "12345");
  fs::create_symlink("file", native(".link"));
  fs::create_directory_symlink(".", native("self"));
  for (const auto entries = folder.listAll(u""); entries->hasNext();) {
    entries->next();
    const auto entry = entries->current();
    SCOPED_TRACE(fl::i18n::to_string(entry.getName()));
    EXPECT_EQ(entry.getFileAttributes().has_value(), entry.isFile());
    EXPECT_EQ(entry.getFolderAttributes().has_value(), !entry.isFile());
    if (!entry.isFile()) {
      EXPECT_TRUE(entry.getFolderAttributes()->isSymlink());
      continue;
    }
    const bool isLink = entry.getName() == u".link";
    EXPECT_EQ(entry.getFileAttributes()->getSize(), 5u);
    EXPECT_EQ(entry.getFileAttributes()->isSymlink(), isLink);
    EXPECT_EQ(entry.getFileAttributes()->isHidden(), isLink);
    EXPECT_TRUE(entry.getFileAttributes()->isWritable());
  }
}

TEST_F(ListingTest, ReadsLargeFoldersAsTheWalkGoesOn) {
  constexpr int count = 100'000;
  for (int i = 0; i < count; ++i)
    ASSERT_EQ(mknod(native(std::to_string(i)).c_str(), S_IFREG | 0600, 0), 0);
  const auto entries = folder.listAllNamesOnly(u"");
  EXPECT_EQ(namesAndKinds(*entries).size(), std::size_t(count));

  // What is removed after the first entry was seen is, but for a buffer full, not seen any more.
  entries->reset();
  ASSERT_TRUE(entries->hasNext());
  entries->next();
  for (int i = 0; i < count; ++i)
    ASSERT_EQ(unlink(native(std::to_string(i)).c_str()), 0);
  EXPECT_LT(namesAndKinds(*entries).size(), std::size_t(count / 10));
}

TEST_F(ListingTest, LeavesOutWhatVanishesAndSurvivesTheFoldersRemoval) {
  fs::create_directory(native("folder"));
  for (const auto* name : {"folder/a", "folder/b", "folder/c"})
    put(name, "");
  const auto entries = child(u"folder").listAll(u"");
  ASSERT_TRUE(entries->hasNext());
  fs::remove_all(native("folder"));
  EXPECT_EQ(namesAndKinds(*entries).size(), 1u);  // the one that was already looked at
}

TEST_F(ListingTest, ListsNamesWhoseAttributesMayNotBeRead) {
  fs::create_directory(native("folder"));
  put("folder/file", "");
  ASSERT_EQ(chmod(native("folder").c_str(), 0444), 0);
  const WithoutPrivileges user;
  const auto entries = child(u"folder").listAll(u"");
  ASSERT_TRUE(entries->hasNext());
  entries->next();
  EXPECT_EQ(entries->current().getName(), u"file");
  EXPECT_FALSE(entries->current().getFileAttributes().has_value());
}

TEST_F(ListingTest, StartsAnewAfterReset) {
  put("a", "");
  const auto entries = folder.listAll(u"");
  EXPECT_THROW(entries->current(), std::logic_error);
  entries->next();
  EXPECT_EQ(entries->current().getName(), u"a");
  EXPECT_FALSE(entries->hasNext());
  entries->next();
  EXPECT_THROW(entries->current(), std::logic_error);
  put("b", "");
  entries->reset();
  EXPECT_EQ(namesAndKinds(*entries).size(), 2u);
}

}  // namespace
}  // namespace foundation::storage::backend::local
