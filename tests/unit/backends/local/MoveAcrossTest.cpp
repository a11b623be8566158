// Moves to another file system.

#include "ReplacedCalls.h"
#include "TemporaryFolder.h"

#include <foundation/storage/provider/ScratchFiles.h>

#include <algorithm>
#include <cerrno>
#include <sys/xattr.h>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

class MoveAcrossTest : public LocalTest {
 protected:
  void SetUp() override {
    if (other.empty())
      GTEST_SKIP() << "there is only one file system here";
    fs::create_directories(native("tree/sub/empty"));
    put("tree/file", "content");
    put("tree/sub/sparse", "x");
    fs::resize_file(native("tree/sub/sparse"), 64 << 20);
    fs::create_symlink("no/where", native("tree/link"));
    EXPECT_EQ(mkfifo(native("tree/pipe").c_str(), 0600), 0);
    EXPECT_EQ(chmod(native("tree/pipe").c_str(), 0666), 0);
    EXPECT_EQ(chmod(native("tree/sub").c_str(), 0750), 0);
    EXPECT_EQ(chmod(native("tree/file").c_str(), 0604), 0);
    setxattr(native("tree/file").c_str(), "user.a", "b", 1, 0);
    const timespec times[] = {{1, 2}, {3, 4}};
    for (const auto* name : {"tree/file", "tree/link", "tree/sub", "tree"})
      EXPECT_EQ(utimensat(AT_FDCWD, native(name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
  }
  ~MoveAcrossTest() override {
    if (!other.empty())
      fs::remove_all(other);
  }

  static struct stat statusOf(const std::string& file) {
    struct stat status {};
    EXPECT_EQ(lstat(file.c_str(), &status), 0) << file;
    return status;
  }

  StorageIRI there(const std::u16string& name) const {
    return {toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(other))), name};
  }

  std::vector<std::string> namesThere() const {
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator(other))
      found.push_back(entry.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
  }

  const std::string other = makeFolderElsewhere(path);
};

TEST_F(MoveAcrossTest, TakesTheWholeTreeAlongAsItIs) {
  const auto ownerBefore = statusOf(native("tree/file")).st_uid;
  child(u"tree").moveFolder(there(u"moved"), ReplacementPolicy::NoClobber);
  EXPECT_FALSE(fs::exists(native("tree")));
  EXPECT_EQ(namesThere(), std::vector<std::string>{"moved"});
  const auto file = statusOf(other + "/moved/file");
  EXPECT_EQ(file.st_mode, S_IFREG | 0604U);
  EXPECT_EQ(file.st_uid, ownerBefore);
  EXPECT_EQ(file.st_mtim.tv_sec, 3);
  EXPECT_EQ(file.st_mtim.tv_nsec, 4);
  EXPECT_EQ(fs::file_size(other + "/moved/file"), 7U);
  char value = '?';
  const bool hasAttributes = setxattr(other.c_str(), "user.test", "", 0, 0) == 0;
  EXPECT_EQ(getxattr((other + "/moved/file").c_str(), "user.a", &value, 1), hasAttributes ? 1 : -1);
  EXPECT_EQ(statusOf(other + "/moved/sub").st_mode, S_IFDIR | 0750U);
  EXPECT_EQ(statusOf(other + "/moved/sub").st_mtim.tv_sec, 3);
  EXPECT_EQ(statusOf(other + "/moved").st_mtim.tv_sec, 3);
  EXPECT_EQ(statusOf(other + "/moved/pipe").st_mode, S_IFIFO | 0666U);
  EXPECT_EQ(fs::read_symlink(other + "/moved/link"), "no/where");
  EXPECT_TRUE(fs::is_empty(other + "/moved/sub/empty"));
  const auto sparse = statusOf(other + "/moved/sub/sparse");
  EXPECT_EQ(sparse.st_size, 64 << 20);
  EXPECT_LT(sparse.st_blocks, 1024);
}

TEST_F(MoveAcrossTest, ReplacesOrKeepsByPolicy) {
  std::ofstream(other + "/a") << "there";
  EXPECT_EQ(codeThrownAt(there(u"a"), [&] { child(u"tree/file").moveFile(there(u"a"), ReplacementPolicy::Preserve); }),
            ErrorCode::ResourceAlreadyExists);
  EXPECT_EQ(content("tree/file"), "content");
  child(u"tree/file").moveFile(there(u"a"), ReplacementPolicy::Overwrite);
  EXPECT_EQ(fs::file_size(other + "/a"), 7U);
  EXPECT_FALSE(fs::exists(native("tree/file")));
  EXPECT_EQ(namesThere(), std::vector<std::string>{"a"});
}

TEST_F(MoveAcrossTest, LeavesEverythingWhereItWasWhenTheOtherIsFull) {
  auto calls = detail::realSystemCalls;
  calls.write = [](int, const void*, std::size_t) noexcept -> ssize_t {
    errno = ENOSPC;
    return -1;
  };
  calls.copyFileRange = [](int, int, std::size_t) noexcept -> ssize_t {
    errno = ENOSPC;
    return -1;
  };
  const ReplacedCalls full(calls);
  try {
    child(u"tree").moveFolder(there(u"moved"), ReplacementPolicy::Overwrite);
    ADD_FAILURE() << "it fitted";
  } catch (const Exception& failure) {
    EXPECT_EQ(failure.getErrorCode(), ErrorCode::NoSpaceLeft);
  }
  EXPECT_EQ(content("tree/file"), "content");
  EXPECT_TRUE(namesThere().empty());
}

detail::SystemCalls withRename(decltype(detail::SystemCalls::renameat) rename) {
  auto calls = detail::realSystemCalls;
  calls.renameat = rename;
  return calls;
}

/// Two mounts of one file system are two to rename(2).
const auto throughTwoMounts =
    withRename([](int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
      if (std::string_view(from).find(".tmp.bak") != std::string_view::npos)
        return detail::realSystemCalls.renameat(fromFolder, from, toFolder, to, flags);
      errno = EXDEV;
      return -1;
    });

TEST_F(MoveAcrossTest, DestroysNothingWhereBothMountsAreOfOneFileSystem) {
  put("file", "content");
  put("two", "content");
  fs::create_hard_link(native("two"), native("names"));
  fs::create_directory_symlink(path, native("way"));
  const ReplacedCalls replaced(throughTwoMounts);
  child(u"file").moveFile(child(u"way/file").getLocation(), ReplacementPolicy::Overwrite);
  EXPECT_EQ(content("file"), "content");
  child(u"tree").moveFolder(child(u"way/tree").getLocation(), ReplacementPolicy::Overwrite);
  EXPECT_EQ(content("tree/file"), "content");
  const auto second = child(u"way/names").getLocation();
  EXPECT_THROW(child(u"two").moveFile(second, ReplacementPolicy::Overwrite), Exception);
  EXPECT_EQ(content("two") + content("names"), "contentcontent");
  const auto inside = child(u"way/tree/sub/in").getLocation();
  EXPECT_THROW(child(u"tree").moveFolder(inside, ReplacementPolicy::Overwrite), Exception);
  EXPECT_EQ(content("tree/file"), "content");
  EXPECT_EQ(std::distance(fs::directory_iterator(native("tree/sub")), fs::directory_iterator()), 2);
}

TEST_F(MoveAcrossTest, CleansUpWhatMayNotBeChanged) {
  fs::create_directories(native("own/locked"));
  put("own/locked/file", "x");
  ASSERT_EQ(chmod(native("own/locked").c_str(), 0555), 0);
  ASSERT_EQ(chmod(other.c_str(), 0777), 0);
  static int finished;
  finished = 0;
  auto calls = detail::realSystemCalls;
  calls.futimens = [](int file, const timespec* times) noexcept {
    errno = EIO;  // for the last one, the top
    return ++finished == 3 ? -1 : detail::realSystemCalls.futimens(file, times);
  };
  const ReplacedCalls failing(calls);
  const auto target = there(u"moved");
  const WithoutPrivileges nobody;
  EXPECT_EQ(codeThrownAt(target, [&] { child(u"own").moveFolder(target, ReplacementPolicy::Overwrite); }),
            ErrorCode::IOError);
  EXPECT_TRUE(namesThere().empty());
  EXPECT_EQ(content("own/locked/file"), "x");
}

/// With an access list (acl(5)) the group's bits of the mode are not what the group may do.
TEST_F(MoveAcrossTest, GivesNobodyMoreWhereAccessListsAreLost) {
  constexpr char list[] =
      "\2\0\0\0"
      "\1\0\6\0\377\377\377\377"
      "\2\0\6\0\71\60\0\0"        // user 12345: rw
      "\4\0\0\0\377\377\377\377"  // the group: nothing
      "\20\0\6\0\377\377\377\377"
      "\40\0\0\0\377\377\377\377";
  if (setxattr(native("tree/file").c_str(), "system.posix_acl_access", list, sizeof list - 1, 0) != 0)
    GTEST_SKIP() << "this file system has no access control lists";
  auto calls = detail::realSystemCalls;
  calls.fsetxattr = [](int, const char*, const void*, std::size_t) noexcept {
    errno = EOPNOTSUPP;
    return -1;
  };
  const ReplacedCalls withoutAttributes(calls);
  child(u"tree/file").moveFile(there(u"a"), ReplacementPolicy::Overwrite);
  EXPECT_EQ(statusOf(other + "/a").st_mode & 07777, 0600U);
}

/// Between reading and removing it there is time for others to write.
TEST_F(MoveAcrossTest, RemovesNoSourceThatWasWrittenToMeanwhile) {
  static std::string source;
  source = native("tree/file");
  auto calls = withRename([](int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    if (std::string_view(from).find(".tmp.bak") != std::string_view::npos)
      std::ofstream(source, std::ios::app) << "more";
    return detail::realSystemCalls.renameat(fromFolder, from, toFolder, to, flags);
  });
  const ReplacedCalls replaced(calls);
  EXPECT_EQ(codeThrownAt(child(u"tree/file"),
                         [&] { child(u"tree/file").moveFile(there(u"a"), ReplacementPolicy::Overwrite); }),
            ErrorCode::ResourceInUse);
  EXPECT_EQ(content("tree/file"), "contentmore");
}

}  // namespace
}  // namespace foundation::storage::backend::local
