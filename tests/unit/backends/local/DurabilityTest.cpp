// What a commit keeps of the file that it replaces, and when it is durable.

#include "ReplacedCalls.h"
#include "TemporaryFolder.h"

#include <foundation/storage/provider/TransactionalStream.h>

#include <boost/property_tree/ptree.hpp>

#include <cerrno>
#include <functional>
#include <sys/xattr.h>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

using Steps = std::vector<std::string>;

Steps steps;
std::string failingStep;

int record(std::string step, const std::function<int()>& call) noexcept {
  steps.push_back(std::move(step));
  if (steps.back() != failingStep)
    return call();
  errno = EIO;
  return -1;
}

detail::SystemCalls recordingCalls() {
  auto calls = detail::realSystemCalls;
  calls.fsync = [](int file) noexcept {
    struct stat status;
    fstat(file, &status);
    return record(S_ISDIR(status.st_mode) ? "sync folder" : "sync file",
                  [&] { return detail::realSystemCalls.fsync(file); });
  };
  calls.renameat = [](int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    return record("rename", [&] { return detail::realSystemCalls.renameat(fromFolder, from, toFolder, to, flags); });
  };
  return calls;
}

class DurabilityTest : public LocalTest {
 protected:
  DurabilityTest() {
    steps.clear();
    failingStep.clear();
    put("file", "old");
  }

  void makeDurable() const {
    boost::property_tree::ptree options;
    options.put("durable", "true");
    folder.configure(options);
  }

  std::unique_ptr<TransactionalStream> writeNew() const {
    auto transaction = child(u"file").openTransactionalStream({});
    EXPECT_EQ(transaction->write("new", 3), 3);
    return transaction;
  }

  std::size_t countEntries() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(path), fs::directory_iterator()));
  }
};

TEST_F(DurabilityTest, SyncsTheFileBeforeAndTheFolderAfterTheRename) {
  makeDurable();
  const ReplacedCalls recording(recordingCalls());
  writeNew()->close(StreamClosePolicy::Commit);
  EXPECT_EQ(steps, (Steps{"sync file", "rename", "sync folder"}));
  EXPECT_EQ(content("file"), "new");
  steps.clear();
  const CopyFileOptions atomic{ReplacementPolicy::Clobber, TransactionPolicy::Atomic, {}};
  child(u"file").copyFile(child(u"copy"), atomic);
  EXPECT_EQ(steps, (Steps{"sync file", "rename", "sync folder"}));
}

TEST_F(DurabilityTest, SyncsNothingUnlessAskedTo) {
  const ReplacedCalls recording(recordingCalls());
  writeNew()->close(StreamClosePolicy::Commit);
  EXPECT_EQ(steps, Steps{"rename"});
}

TEST_F(DurabilityTest, NeverCommitsWhatCouldNotBeSynced) {
  makeDurable();
  const ReplacedCalls recording(recordingCalls());
  const auto transaction = writeNew();
  failingStep = "sync file";
  EXPECT_EQ(child(u"file").getName(), u"file");
  EXPECT_THROW(transaction->close(StreamClosePolicy::Commit), Exception);
  failingStep.clear();
  EXPECT_THROW(transaction->close(StreamClosePolicy::Commit), Exception);
  EXPECT_EQ(steps, Steps{"sync file"});  // once: a second success would mean nothing
  EXPECT_EQ(content("file"), "old");
  transaction->close(StreamClosePolicy::Abort);
  EXPECT_EQ(countEntries(), 1U);
}

TEST_F(DurabilityTest, CanTryTheRenameAgain) {
  makeDurable();
  const ReplacedCalls recording(recordingCalls());
  const auto transaction = writeNew();
  failingStep = "rename";
  EXPECT_THROW(transaction->close(StreamClosePolicy::Commit), Exception);
  EXPECT_EQ(content("file"), "old");
  failingStep.clear();
  transaction->close(StreamClosePolicy::Commit);
  EXPECT_EQ(steps, (Steps{"sync file", "rename", "rename", "sync folder"}));
  EXPECT_EQ(content("file"), "new");
}

TEST_F(DurabilityTest, SaysWhenTheRenameMayNotLast) {
  makeDurable();
  const ReplacedCalls recording(recordingCalls());
  failingStep = "sync folder";
  const auto transaction = writeNew();
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(codeThrownAt(child(u"file"), [&] { transaction->close(StreamClosePolicy::Commit); }), ErrorCode::IOError);
  EXPECT_EQ(content("file"), "new");
  EXPECT_EQ(countEntries(), 1U);
}

TEST_F(DurabilityTest, KeepsModeOwnerAndAttributes) {
  ASSERT_EQ(chmod(native("file").c_str(), 0640), 0);
  const bool hasOwner = chown(native("file").c_str(), 12345, 23456) == 0;  // as root
  const bool hasAttributes = setxattr(native("file").c_str(), "user.a", "\0b", 2, 0) == 0 &&
                             setxattr(native("file").c_str(), "user.empty", "", 0, 0) == 0;
  writeNew()->close(StreamClosePolicy::Commit);
  struct stat status;
  ASSERT_EQ(stat(native("file").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);
  EXPECT_EQ(status.st_uid, hasOwner ? 12345 : geteuid());
  EXPECT_EQ(status.st_gid, hasOwner ? 23456 : getegid());
  if (!hasAttributes)
    GTEST_SKIP() << "this file system has no extended attributes";
  const auto attributes = child(u"file").getExtendedAttributes();
  EXPECT_EQ(attributes.getAttribute<std::string>("user.a"), std::string("\0b", 2));
  EXPECT_EQ(attributes.getAttribute<std::string>("user.empty"), "");
}

/// To a file that may not be written to even its owner can give none.
TEST_F(DurabilityTest, KeepsTheAttributesOfWhatMayOnlyBeRead) {
  ASSERT_EQ(chmod(path.c_str(), 0777), 0);
  const WithoutPrivileges nobody;
  put("own", "old");
  if (setxattr(native("own").c_str(), "user.a", "b", 1, 0) != 0)
    GTEST_SKIP() << "this file system has no extended attributes";
  ASSERT_EQ(chmod(native("own").c_str(), 0444), 0);
  child(u"own").openTransactionalStream({})->close(StreamClosePolicy::Commit);
  struct stat status;
  ASSERT_EQ(stat(native("own").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0444U);
  EXPECT_EQ(child(u"own").getExtendedAttributes().getAttribute<std::string>("user.a"), "b");
}

TEST_F(DurabilityTest, CommitsAlsoWhatIsNotThereAnyMore) {
  setxattr(native("file").c_str(), "user.a", "b", 1, 0);
  const auto transaction = writeNew();
  fs::remove(native("file"));
  transaction->close(StreamClosePolicy::Commit);
  EXPECT_EQ(content("file"), "new");
}

/// What a folder gives its new files is not what the replaced file lets in.
TEST_F(DurabilityTest, LetsNobodyInThatTheReplacedFileKeepsOut) {
  constexpr char list[] =
      "\2\0\0\0"
      "\1\0\6\0\377\377\377\377"
      "\2\0\6\0\71\60\0\0"  // user 12345: rw
      "\4\0\0\0\377\377\377\377"
      "\20\0\6\0\377\377\377\377"
      "\40\0\0\0\377\377\377\377";
  if (setxattr(path.c_str(), "system.posix_acl_default", list, sizeof list - 1, 0) != 0)
    GTEST_SKIP() << "this file system has no access control lists";
  ASSERT_EQ(chmod(native("file").c_str(), 0640), 0);
  const auto hasList = [](const std::string& file) {
    return getxattr(file.c_str(), "system.posix_acl_access", nullptr, 0) > 0;
  };
  const auto transaction = writeNew();
  for (const auto& entry : fs::directory_iterator(path))
    EXPECT_FALSE(hasList(entry.path()));
  transaction->close(StreamClosePolicy::Commit);
  EXPECT_FALSE(hasList(native("file")));
}

/// acl(5), in the form of the attribute: version 2, then tag, permissions and id of each entry.
TEST_F(DurabilityTest, KeepsTheAccessList) {
  constexpr char list[] =
      "\2\0\0\0"
      "\1\0\6\0\377\377\377\377"    // the owner: rw
      "\2\0\4\0\71\60\0\0"          // user 12345: r
      "\4\0\0\0\377\377\377\377"    // the group: nothing
      "\20\0\4\0\377\377\377\377"   // mask: r
      "\40\0\0\0\377\377\377\377";  // others: nothing
  constexpr auto* name = "system.posix_acl_access";
  if (setxattr(native("file").c_str(), name, list, sizeof list - 1, 0) != 0)
    GTEST_SKIP() << "this file system has no access control lists";
  {
    const auto transaction = writeNew();
    for (const auto& entry : fs::directory_iterator(path))
      EXPECT_EQ(static_cast<unsigned>(entry.status().permissions()) & 0070U,
                entry.path().filename() == "file" ? 0040U : 0U);  // no more than all others may
    transaction->close(StreamClosePolicy::Commit);
  }
  std::string kept(256, '\0');
  const auto size = getxattr(native("file").c_str(), name, kept.data(), kept.size());
  ASSERT_GT(size, 0);
  EXPECT_EQ(kept.substr(0, static_cast<std::size_t>(size)), std::string(list, sizeof list - 1));
}

}  // namespace
}  // namespace foundation::storage::backend::local
