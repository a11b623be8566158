// Moves that others interfere with, and moves on file systems that can do less.

#include "ReplacedCalls.h"
#include "TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <latch>
#include <string_view>
#include <thread>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

detail::SystemCalls withRename(decltype(detail::SystemCalls::renameat) rename) {
  auto calls = detail::realSystemCalls;
  calls.renameat = rename;
  return calls;
}

int failWith(int error) {
  errno = error;
  return -1;
}

/// Nothing can be renamed to names that end in "names/b".
const auto withBusyName =
    withRename([](int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
      return std::string_view(to).ends_with("names/b")
                 ? failWith(EBUSY)
                 : detail::realSystemCalls.renameat(fromFolder, from, toFolder, to, flags);
    });

/// rename(2): "The filesystem does not support one of the flags".
const auto withoutExclusiveRename =
    withRename([](int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
      return flags != 0 ? failWith(EINVAL) : detail::realSystemCalls.renameat(fromFolder, from, toFolder, to, flags);
    });

const auto withBusyNameOnly =
    withRename([](int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
      return std::string_view(to).ends_with("names/b")
                 ? failWith(EBUSY)
                 : withoutExclusiveRename.renameat(fromFolder, from, toFolder, to, flags);
    });

class MoveTest : public LocalTest {
 protected:
  std::vector<std::string> namesIn(const std::string& folderName) const {
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator(native(folderName)))
      found.push_back(entry.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
  }

  /// Moves each of `names` onto the next one, the last onto the first, all at once.
  void moveAround(const std::vector<std::string>& names) const {
    std::latch start(static_cast<std::ptrdiff_t>(names.size()));
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < names.size(); ++i)
      threads.emplace_back([this, &start, &names, i] {
        const StorageItem from = child(fl::i18n::to_ustring("names/" + names[i]));
        const StorageItem to = child(fl::i18n::to_ustring("names/" + names[(i + 1) % names.size()]));
        start.arrive_and_wait();
        EXPECT_NO_THROW(from.moveFile(to.getLocation(), ReplacementPolicy::Overwrite));
      });
    for (auto& thread : threads)
      thread.join();
  }

  void makeHardLinks(const std::vector<std::string>& names) const {
    fs::create_directory(native("names"));
    put("names/" + names.front(), "content");
    for (auto name = names.begin() + 1; name != names.end(); ++name)
      fs::create_hard_link(native("names/" + names.front()), native("names/" + *name));
  }
};

TEST_F(MoveTest, NeverLosesTheLastNameOfAFile) {
  for (const std::vector<std::string>& names : {std::vector<std::string>{"a", "b"}, {"a", "b", "c", "d"}})
    for (int round = 0; round < 1000; ++round) {
      makeHardLinks(names);
      moveAround(names);
      const auto left = namesIn("names");
      ASSERT_FALSE(left.empty()) << "round " << round;
      for (const auto& name : left) {
        ASSERT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
        ASSERT_EQ(content("names/" + name), "content");
      }
      fs::remove_all(native("names"));
    }
}

TEST_F(MoveTest, GivesTheNameBackWhereTheOtherCannotBeReplaced) {
  makeHardLinks({"a", "b"});
  const auto target = child(u"names/b").getLocation();
  for (const auto& calls : {withBusyName, withBusyNameOnly}) {
    const ReplacedCalls replaced(calls);
    EXPECT_EQ(codeThrownAt(target, [&] { child(u"names/a").moveFile(target, ReplacementPolicy::Overwrite); }),
              ErrorCode::ResourceInUse);
    EXPECT_EQ(namesIn("names"), (std::vector<std::string>{"a", "b"}));
  }
}

TEST_F(MoveTest, TellsUnderWhichNameTheFileIsWhereItCannotBeGivenBack) {
  makeHardLinks({"a", "b"});
  const auto target = child(u"names/b").getLocation();
  // Only the first rename of a move succeeds, which takes the name aside.
  const ReplacedCalls replaced(
      withRename([](int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
        return std::string_view(from).ends_with(".moved")
                   ? failWith(EBUSY)
                   : detail::realSystemCalls.renameat(fromFolder, from, toFolder, to, flags);
      }));
  try {
    child(u"names/a").moveFile(target, ReplacementPolicy::Overwrite);
    ADD_FAILURE() << "it is moved";
  } catch (const Exception& failure) {
    EXPECT_EQ(failure.getErrorCode(), ErrorCode::ResourceInUse);
    EXPECT_EQ(failure.getStorageIRI(), target);
    const auto contexts = failure.getAllExceptionContexts();
    ASSERT_EQ(contexts.size(), 2u);
    const auto info = contexts.back().getExceptionContextInfo();
    const StorageIRI left(info->getAdditionalInformation().at(u"location"));
    EXPECT_EQ(namesIn("names"), (std::vector<std::string>{fl::i18n::to_string(left.getName()), "b"}));
    EXPECT_EQ(content("names/" + fl::i18n::to_string(left.getName())), "content");
  }
}

/// In a sticky folder others' files can neither be replaced nor removed.
TEST_F(MoveTest, DestroysNothingByOtherWaysToTheSource) {
  put("file", "content");
  std::filesystem::create_symlink("file", native("link"));
  EXPECT_EQ(codeThrownAt(child(u"file"),
                         [&] { child(u"link").moveFile(child(u"file").getLocation(), ReplacementPolicy::Overwrite); }),
            ErrorCode::InvalidLocation);
  EXPECT_EQ(content("file"), "content");
  std::filesystem::create_directory(native("folder"));
  std::filesystem::create_symlink("folder", native("way"));
  EXPECT_ANY_THROW(child(u"folder").moveFolder(child(u"way/.").getLocation(), ReplacementPolicy::Overwrite));
  EXPECT_TRUE(std::filesystem::is_directory(native("folder")));
}

class StickyFolderTest : public MoveTest {
 protected:
  void SetUp() override {
    if (geteuid() != 0)
      GTEST_SKIP() << "only root can make files for others";
    fs::create_directory(native("open"));
    fs::create_directory(native("sticky"));
    ASSERT_EQ(chmod(native("open").c_str(), 0777), 0);
    ASSERT_EQ(chmod(native("sticky").c_str(), 01777), 0);
    put("sticky/file", "content");
    ASSERT_EQ(chmod(native("sticky/file").c_str(), 0666), 0);  // so that others may link it, too
  }
};

TEST_F(StickyFolderTest, NeedsOnlyTheFolderOfTheSource) {
  fs::create_hard_link(native("sticky/file"), native("open/file"));
  {
    const WithoutPrivileges user;
    child(u"open/file").moveFile(child(u"sticky/file").getLocation(), ReplacementPolicy::Overwrite);
  }
  EXPECT_EQ(namesIn("open"), std::vector<std::string>{});
  EXPECT_EQ(namesIn("sticky"), std::vector<std::string>{"file"});
}

TEST_F(StickyFolderTest, LeavesNoSecondNameWhereTheFirstCannotBeRemoved) {
  const ReplacedCalls old(withoutExclusiveRename);
  const auto target = child(u"open/file");
  {
    const WithoutPrivileges user;
    const auto move = [&] { child(u"sticky/file").moveFile(target.getLocation(), ReplacementPolicy::Preserve); };
    EXPECT_EQ(codeThrownAt(target, move), ErrorCode::PermissionDenied);
  }
  EXPECT_EQ(namesIn("open"), std::vector<std::string>{});
  EXPECT_EQ(content("sticky/file"), "content");
}

TEST_F(MoveTest, ReplacesNothingWithoutAnExclusiveRenameEither) {
  const ReplacedCalls old(withoutExclusiveRename);
  put("file", "content");
  put("taken", "other");
  fs::create_directory(native("folder"));
  const auto move = [&](const char16_t* from, const char16_t* to) {
    child(from).exists() == ExistenceType::AsFolder
        ? child(from).moveFolder(child(to).getLocation(), ReplacementPolicy::Preserve)
        : child(from).moveFile(child(to).getLocation(), ReplacementPolicy::Preserve);
  };
  for (const auto* from : {u"file", u"folder"})
    EXPECT_EQ(codeThrownAt(child(u"taken"), [&] { move(from, u"taken"); }), ErrorCode::ResourceAlreadyExists);
  move(u"file", u"new-file");
  move(u"folder", u"new-folder");
  EXPECT_EQ(namesIn("."), (std::vector<std::string>{"new-file", "new-folder", "taken"}));
  EXPECT_EQ(content("new-file"), "content");
  EXPECT_EQ(content("taken"), "other");
}

}  // namespace
}  // namespace foundation::storage::backend::local
