// Creating, finding, removing and moving: what happens to the names of files and folders.

#include "TemporaryFolder.h"

#include <thread>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

class EntriesTest : public LocalTest {
 protected:
  void makeOneOfEach() const {
    put("file", "content");
    fs::create_directory(native("folder"));
    fs::create_symlink("file", native("to-file"));
    fs::create_directory_symlink("folder", native("to-folder"));
    fs::create_symlink("nowhere", native("dangling"));
    fs::create_symlink("loop", native("loop"));
    ASSERT_EQ(mkfifo(native("pipe").c_str(), 0600), 0);
  }
};

TEST_F(EntriesTest, TellsWhatIsThere) {
  makeOneOfEach();
  const struct {
    const char16_t* name;
    ExistenceType type;
    ExistenceTypeExtended extended;
  } cases[] = {
      {u"file", ExistenceType::AsFile, ExistenceTypeExtended::RegularFile},
      {u"folder", ExistenceType::AsFolder, ExistenceTypeExtended::RegularFolder},
      {u"to-file", ExistenceType::AsFile, ExistenceTypeExtended::SymlinkToFile},
      {u"to-folder", ExistenceType::AsFolder, ExistenceTypeExtended::SymlinkToFolder},
      {u"dangling", ExistenceType::AsNeither, ExistenceTypeExtended::BrokenSymlink},
      {u"loop", ExistenceType::AsNeither, ExistenceTypeExtended::BrokenSymlink},
      {u"pipe", ExistenceType::AsFile, ExistenceTypeExtended::SpecialFile},
      {u"missing", ExistenceType::AsNeither, ExistenceTypeExtended::None},
      {u"file/below", ExistenceType::AsNeither, ExistenceTypeExtended::None},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(fl::i18n::to_string(row.name));
    const auto item = child(row.name);
    EXPECT_EQ(item.exists(), row.type);
    EXPECT_EQ(item.existsExtended(), row.extended);
    EXPECT_EQ(item.fileExists(), row.type == ExistenceType::AsFile);
    EXPECT_EQ(item.folderExists(), row.type == ExistenceType::AsFolder);
  }
}

TEST_F(EntriesTest, CreatesOnlyWhereNothingIs) {
  makeOneOfEach();
  for (const auto* name : {u"file", u"folder", u"to-file", u"to-folder", u"dangling", u"pipe"}) {
    const auto item = child(name);
    EXPECT_EQ(codeThrownAt(item, [&] { item.createFile(); }), ErrorCode::ResourceAlreadyExists);
    EXPECT_EQ(codeThrownAt(item, [&] { item.createFolder(); }), ErrorCode::ResourceAlreadyExists);
  }
  EXPECT_EQ(content("file"), "content");
  EXPECT_FALSE(fs::exists(native("nowhere")));
}

TEST_F(EntriesTest, CreatesAllMissingFolders) {
  child(u"a/b/c").createFolderRecursive();
  child(u"a/b/c/file").createFile();
  EXPECT_TRUE(fs::is_directory(native("a/b/c")));
  EXPECT_EQ(fs::file_size(native("a/b/c/file")), 0u);
  EXPECT_EQ(codeThrownAt(child(u"a/b"), [&] { child(u"a/b").createFolderRecursive(); }),
            ErrorCode::ResourceAlreadyExists);
}

TEST_F(EntriesTest, KeepsEveryNameThatTheSystemCanHave) {
  const std::vector<std::string> names{"100%", "a#b?c",     "a b",
                                       "ä€😀",  "..x",       "a!b",
                                       "[x]",  "\xff\xfe",  "\xc3(\xe4.txt",
                                       "a\\b", "line\nend", " ",
                                       "%41",  "C:",        std::string(255, 'n')};
  for (const auto& name : names) {
    SCOPED_TRACE(name);
    const auto item = child(fl::i18n::to_ustring(name));
    item.createFile();
    EXPECT_TRUE(fs::exists(native(name)));
    EXPECT_EQ(fl::i18n::to_string(item.getName()), name);
    EXPECT_TRUE(StorageItem(folder, StorageIRI(item.getLocation().toString())).fileExists());
    const auto entries = folder.listFiles(u"");
    ASSERT_TRUE(entries->hasNext());
    entries->next();
    EXPECT_EQ(fl::i18n::to_string(entries->current().getName()), name);
    item.removeFile();
    EXPECT_FALSE(fs::exists(native(name)));
  }
}

TEST_F(EntriesTest, RemovesLinksAndNotWhatTheyLeadTo) {
  makeOneOfEach();
  for (const auto* name : {u"to-file", u"to-folder", u"dangling", u"loop", u"pipe"})
    child(name).removeFile();
  EXPECT_EQ(content("file"), "content");
  EXPECT_TRUE(fs::is_directory(native("folder")));
  EXPECT_EQ(std::distance(fs::directory_iterator(path), {}), 2);
}

TEST_F(EntriesTest, RemovesOnlyWhatItIsAskedFor) {
  makeOneOfEach();
  put("folder/inside", "");
  EXPECT_EQ(codeThrownAt(child(u"folder"), [&] { child(u"folder").removeFolder(); }), ErrorCode::FolderNotEmpty);
  EXPECT_EQ(codeThrownAt(child(u"folder"), [&] { child(u"folder").removeFile(); }), ErrorCode::InvalidLocation);
  EXPECT_EQ(codeThrownAt(child(u"file"), [&] { child(u"file").removeFolder(); }), ErrorCode::InvalidLocation);
  EXPECT_EQ(codeThrownAt(child(u"missing"), [&] { child(u"missing").removeFile(); }), ErrorCode::ResourceNotFound);
  child(u"folder/inside").removeFile();
  child(u"folder/").removeFolder();
  EXPECT_FALSE(fs::exists(native("folder")));
}

TEST_F(EntriesTest, MovesFilesByPolicy) {
  for (const auto policy : {ReplacementPolicy::Preserve, ReplacementPolicy::Overwrite, ReplacementPolicy::Clobber,
                            ReplacementPolicy::NoClobber}) {
    SCOPED_TRACE(static_cast<int>(policy));
    const auto to = child(u"to");
    put("from", "new");
    fs::remove(native("to"));
    child(u"from").moveFile(to.getLocation(), policy);
    EXPECT_EQ(content("to"), "new");
    EXPECT_FALSE(fs::exists(native("from")));
    put("from", "newer");
    const auto move = [&] { child(u"from").moveFile(to.getLocation(), policy); };
    if (preservesExisting(policy)) {
      EXPECT_EQ(codeThrownAt(to, move), ErrorCode::ResourceAlreadyExists);
      EXPECT_EQ(content("to") + content("from"), "newnewer");
    } else {
      move();
      EXPECT_EQ(content("to"), "newer");
      EXPECT_FALSE(fs::exists(native("from")));
    }
  }
}

TEST_F(EntriesTest, MovesLinksThemselves) {
  makeOneOfEach();
  child(u"to-file").moveFile(child(u"renamed").getLocation(), ReplacementPolicy::Preserve);
  child(u"dangling").moveFile(child(u"lost").getLocation(), ReplacementPolicy::Overwrite);
  child(u"to-folder").moveFolder(child(u"renamed-folder").getLocation(), ReplacementPolicy::Preserve);
  EXPECT_EQ(fs::read_symlink(native("renamed")), "file");
  EXPECT_EQ(fs::read_symlink(native("lost")), "nowhere");
  EXPECT_EQ(fs::read_symlink(native("renamed-folder")), "folder");
}

TEST_F(EntriesTest, MovesAFileOntoItsOtherNames) {
  put("a", "content");
  fs::create_hard_link(native("a"), native("b"));
  child(u"a").moveFile(child(u"b").getLocation(), ReplacementPolicy::Overwrite);
  EXPECT_FALSE(fs::exists(native("a")));
  // Two ways to one entry are no two entries.
  fs::create_hard_link(native("b"), native("c"));
  fs::create_directory_symlink(".", native("here"));
  child(u"b").moveFile(child(u"here/b").getLocation(), ReplacementPolicy::Overwrite);
  EXPECT_EQ(content("b"), "content");
}

TEST_F(EntriesTest, ManyThreadsCreateOneTree) {
  std::vector<std::thread> threads;
  for (int number = 0; number < 8; ++number)
    threads.emplace_back([this, number] {
      for (int round = 0; round < 50; ++round)
        child(fl::i18n::to_ustring("r" + std::to_string(round) + "/a/b/" + std::to_string(number)))
            .createFolderRecursive();
    });
  for (auto& thread : threads)
    thread.join();
  EXPECT_EQ(std::distance(fs::recursive_directory_iterator(path), {}), 50 * (3 + 8));
}

TEST_F(EntriesTest, MovesFoldersOnlyOntoNothingOrAnEmptyOne) {
  fs::create_directories(native("from/inside"));
  fs::create_directories(native("full/inside"));
  fs::create_directory(native("empty"));
  const auto from = child(u"from");
  const auto moveTo = [&](const char16_t* name, ReplacementPolicy policy) {
    return codeThrownAt(child(name), [&] { from.moveFolder(child(name).getLocation(), policy); });
  };
  fs::create_directory_symlink("empty", native("link"));
  put("file", "content");
  EXPECT_EQ(moveTo(u"full", ReplacementPolicy::Overwrite), ErrorCode::FolderNotEmpty);
  EXPECT_EQ(moveTo(u"file", ReplacementPolicy::Overwrite), ErrorCode::InvalidLocation);
  EXPECT_THROW(child(u"link").moveFolder(child(u"file").getLocation(), ReplacementPolicy::Overwrite), Exception);
  EXPECT_EQ(content("file"), "content");
  EXPECT_EQ(moveTo(u"empty", ReplacementPolicy::Preserve), ErrorCode::ResourceAlreadyExists);
  from.moveFolder(child(u"empty").getLocation(), ReplacementPolicy::Overwrite);
  EXPECT_TRUE(fs::is_directory(native("empty/inside")));
  EXPECT_FALSE(fs::exists(native("from")));
}

TEST_F(EntriesTest, RefusesToMoveTheOtherKindOrIntoItself) {
  makeOneOfEach();
  const auto target = child(u"target").getLocation();
  const auto policy = ReplacementPolicy::Overwrite;
  const auto file = child(u"file");
  const auto inner = child(u"folder");
  EXPECT_EQ(codeThrownAt(inner, [&] { inner.moveFile(target, policy); }), ErrorCode::InvalidLocation);
  EXPECT_EQ(codeThrownAt(file, [&] { file.moveFolder(target, policy); }), ErrorCode::InvalidLocation);
  EXPECT_EQ(codeThrownAt(child(u"missing"), [&] { child(u"missing").moveFile(target, policy); }),
            ErrorCode::ResourceNotFound);
  EXPECT_EQ(codeThrownAt(inner, [&] { file.moveFile(inner.getLocation(), policy); }), ErrorCode::InvalidLocation);
  const auto below = child(u"no/where");
  EXPECT_EQ(codeThrownAt(below, [&] { file.moveFile(below.getLocation(), policy); }), ErrorCode::ResourceNotFound);
  // Through a link the texts do not tell that the destination lies inside the source; the system does.
  for (const auto each : {ReplacementPolicy::Overwrite, ReplacementPolicy::Preserve}) {
    const auto inside = child(u"to-folder/deep");
    EXPECT_EQ(codeThrownAt(inside, [&] { inner.moveFolder(inside.getLocation(), each); }), ErrorCode::InvalidLocation);
  }
  EXPECT_EQ(content("file"), "content");
}

TEST_F(EntriesTest, GivesCanonicalLocations) {
  makeOneOfEach();
  EXPECT_EQ(child(u"to-folder/../to-file").getCanonicalLocation(), child(u"file").getCanonicalLocation());
  const auto missing = child(u"missing");
  EXPECT_EQ(codeThrownAt(missing, [&] { missing.getCanonicalLocation(); }), ErrorCode::ResourceNotFound);
}

}  // namespace
}  // namespace foundation::storage::backend::local
