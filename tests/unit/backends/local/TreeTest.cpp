// Trees: removing them, listing them, and names at the end of paths that are too long for the system.

#include "ReplacedCalls.h"
#include "TemporaryFolder.h"

#include <foundation/storage/provider/TransactionalStream.h>

#include <boost/property_tree/ptree.hpp>

#include <cerrno>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

class TreeTest : public LocalTest {
 protected:
  /// Makes folders in folders, deeper than any path reaches.
  /// @return the path of the last one, relative to the test's folder
  std::string makeDeep(const std::string& name, int depth) const {
    auto deepest = name;
    int parent = open(path.c_str(), O_PATH);
    for (int i = 0; i < depth; ++i) {
      const auto next = i == 0 ? name : std::string(40, 'd');
      EXPECT_EQ(mkdirat(parent, next.c_str(), 0755), 0);
      const int folderThere = openat(parent, next.c_str(), O_PATH);
      close(parent);
      parent = folderThere;
      deepest += i == 0 ? "" : "/" + next;
    }
    close(parent);
    return deepest;
  }
};

TEST_F(TreeTest, RemovesWhateverIsInAFolder) {
  fs::create_directories(native("outside/kept"));
  put("outside/file", "kept");
  fs::create_directories(native("tree/sub/empty"));
  put("tree/file", "x");
  fs::create_directory_symlink(native("outside"), native("tree/link"));
  fs::create_symlink("nowhere", native("tree/sub/dangling"));
  ASSERT_EQ(mkfifo(native("tree/pipe").c_str(), 0600), 0);
  for (int i = 0; i < 5000; ++i)
    put("tree/sub/" + std::to_string(i), "");
  for (int i = 0; i < 500; ++i)
    fs::create_directories(native("tree/many/" + std::to_string(i) + "/below"));
  child(u"tree").removeFolderRecursively();
  EXPECT_FALSE(fs::exists(native("tree")));
  EXPECT_EQ(content("outside/file"), "kept");
  EXPECT_TRUE(fs::exists(native("outside/kept")));
}

TEST_F(TreeTest, RemovesNoLinkAndNoFileAsATree) {
  fs::create_directory(native("folder"));
  put("folder/file", "kept");
  fs::create_directory_symlink("folder", native("link"));
  put("file", "kept");
  for (const auto* name : {u"link", u"file"})
    EXPECT_EQ(codeThrownAt(child(name), [&] { child(name).removeFolderRecursively(); }), ErrorCode::InvalidLocation);
  EXPECT_EQ(codeThrownAt(child(u"no"), [&] { child(u"no").removeFolderRecursively(); }), ErrorCode::ResourceNotFound);
  EXPECT_EQ(content("folder/file"), "kept");
}

/// The calls that would do it are not made in this test, whatever the back end does.
TEST_F(TreeTest, NeverEmptiesTheRoot) {
  auto calls = detail::realSystemCalls;
  calls.unlinkat = [](int, const char*, int) noexcept {
    ADD_FAILURE() << "something would be removed";
    errno = EPERM;
    return -1;
  };
  const ReplacedCalls harmless(calls);
  const StorageItem root(folder, StorageIRI(u"file:///"));
  EXPECT_EQ(codeThrownAt(root, [&] { root.removeFolderRecursively(); }), ErrorCode::ResourceInUse);
}

TEST_F(TreeTest, RemovesTreesOfAnyDepth) {
  makeDeep("deep", 3000);
  child(u"deep").removeFolderRecursively();
  EXPECT_FALSE(fs::exists(native("deep")));
}

TEST_F(TreeTest, NamesWhatCannotBeRemoved) {
  fs::create_directories(native("tree/locked"));
  put("tree/locked/file", "x");
  auto calls = detail::realSystemCalls;
  calls.unlinkat = [](int parent, const char* name, int flags) noexcept {
    errno = EPERM;
    return std::string_view(name) == "file" ? -1 : detail::realSystemCalls.unlinkat(parent, name, flags);
  };
  const ReplacedCalls locked(calls);
  EXPECT_EQ(codeThrownAt(child(u"tree/locked/file"), [&] { child(u"tree").removeFolderRecursively(); }),
            ErrorCode::PermissionDenied);
}

TEST_F(TreeTest, ServesPathsOfAnyLength) {
  const auto deepest = fl::i18n::to_ustring(makeDeep("deep", 300));
  const auto item = [&](const char16_t* name) { return child(deepest + u"/" + name); };
  item(u"a").createFile();
  item(u"b").createFolder();
  {
    const auto stream = item(u"a").openTransactionalStream({});
    stream->write("content", 7);
    stream->close(StreamClosePolicy::Commit);
  }
  item(u"a").copyFile(item(u"c"), ReplacementPolicy::NoClobber);
  item(u"c").moveFile(item(u"d").getLocation(), ReplacementPolicy::NoClobber);
  item(u"d").truncateToSize(3);
  item(u"d").setWritable(false);
  item(u"d").setWritable(true);
  EXPECT_EQ(item(u"d").getFileAttributes().getSize(), 3U);
  EXPECT_TRUE(item(u"d").getFileAttributes().isWritable());
  EXPECT_EQ(item(u"b").existsExtended(), ExistenceTypeExtended::RegularFolder);
  EXPECT_EQ(item(u"a").getCanonicalLocation(), item(u"a").getLocation());
  std::size_t count = 0;
  for (const auto listing = child(u"deep").listAllRecursiveNamesOnly(u""); listing->hasNext(); listing->next())
    ++count;
  EXPECT_EQ(count, 299U + 3U);
  item(u"a").removeFile();
  item(u"b").removeFolder();
  EXPECT_EQ(item(u"b").exists(), ExistenceType::AsNeither);
  child(u"deep").removeFolderRecursively();
}

TEST_F(TreeTest, HidesScratchFilesWhenAsked) {
  const auto transaction = child(u"file").openTransactionalStream({});
  const auto count = [&](IProvider::Listing listing) {
    std::size_t entries = 0;
    for (; listing->hasNext(); listing->next())
      ++entries;
    return entries;
  };
  EXPECT_EQ(count(folder.listAll(u"")), 1U);
  boost::property_tree::ptree options;
  options.put("hide-scratch-files", "true");
  folder.configure(options);
  EXPECT_EQ(count(folder.listAll(u"")), 0U);
  EXPECT_EQ(count(folder.listAllNamesOnly(u"*")), 0U);
  EXPECT_EQ(count(folder.listAllRecursive(u"")), 0U);
}

}  // namespace
}  // namespace foundation::storage::backend::local
