// Transactions on real files: what readers see before and after, and what is left behind.

#include "ReplacedCalls.h"
#include "TemporaryFolder.h"

#include <foundation/storage/provider/GenericTransactionalStream.h>

#include <atomic>
#include <cerrno>
#include <regex>
#include <thread>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

mode_t takenAway = 0;  ///< permissions that files have had and were to lose

detail::SystemCalls withFchmod(decltype(detail::SystemCalls::fchmod) fchmod) {
  auto calls = detail::realSystemCalls;
  calls.fchmod = fchmod;
  return calls;
}

const auto recordingPermissions = withFchmod([](int file, mode_t mode) noexcept {
  struct stat status = {};
  if (fstat(file, &status) == 0)
    takenAway |= status.st_mode & ~mode & 07777;
  return detail::realSystemCalls.fchmod(file, mode);
});

const auto withoutPermissions = withFchmod([](int, mode_t) noexcept {
  errno = EPERM;
  return -1;
});

class WithUmask {
 public:
  explicit WithUmask(mode_t mask) : before_(umask(mask)) {}
  ~WithUmask() { umask(before_); }
  WithUmask(const WithUmask&) = delete;
  WithUmask& operator=(const WithUmask&) = delete;

 private:
  mode_t before_;
};

class TransactionTest : public LocalTest {
 protected:
  mode_t modeOf(const std::string& name) const {
    struct stat status = {};
    EXPECT_EQ(lstat(native(name).c_str(), &status), 0) << name;
    return status.st_mode & 07777;
  }

  static void write(TransactionalStream& stream, const std::string& bytes) {
    ASSERT_EQ(stream.write(bytes.data(), static_cast<std::int64_t>(bytes.size())),
              static_cast<std::int64_t>(bytes.size()));
  }

  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator(path))
      found.push_back(entry.path().filename().string());
    return found;
  }
};

TEST_F(TransactionTest, ShowsNothingUntilTheCommit) {
  put("file", "old");
  const auto stream = child(u"file").openTransactionalStream({.access = ByteStreamAccess::ReadWrite});
  write(*stream, "new");
  EXPECT_EQ(content("file"), "old");
  const std::regex scratch(R"(\.[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}\.tmp\.bak)");
  for (const auto& name : names())
    EXPECT_TRUE(name == "file" || std::regex_match(name, scratch)) << name;
  EXPECT_EQ(names().size(), 2u);
  stream->seek(0, std::ios_base::beg);
  char byte = 0;
  EXPECT_EQ(stream->read(&byte, 1), 1);
  stream->close(StreamClosePolicy::Commit);
  stream->close(StreamClosePolicy::Abort);  // too late to matter
  EXPECT_EQ(content("file"), "new");
  EXPECT_EQ(names().size(), 1u);
}

TEST_F(TransactionTest, LeavesNothingBehindWhenItIsAbortedDroppedOrUnwound) {
  put("file", "old");
  const auto file = child(u"file");
  const auto aborted = file.openTransactionalStream({});
  write(*aborted, "new");
  aborted->close(StreamClosePolicy::Abort);
  aborted->close(StreamClosePolicy::Commit);
  write(*file.openTransactionalStream({}), "new");
  try {
    const auto unwound = file.openTransactionalStream({});
    write(*unwound, "new");
    throw std::runtime_error("something else");
  } catch (const std::runtime_error&) {
    EXPECT_EQ(content("file"), "old");
  }
  EXPECT_EQ(names(), std::vector<std::string>{"file"});
}

TEST_F(TransactionTest, StaysOpenAfterAFailedCommit) {
  const auto taken = child(u"folder");
  {
    const auto stream = taken.openTransactionalStream({});
    write(*stream, "new");
    fs::create_directory(native("folder"));
    EXPECT_EQ(codeThrownAt(taken, [&] { stream->close(StreamClosePolicy::Commit); }), ErrorCode::InvalidLocation);
    EXPECT_EQ(names().size(), 2u);  // the scratch file is still there
    stream->close(StreamClosePolicy::Abort);
    EXPECT_EQ(names().size(), 1u);
  }
  fs::remove(native("folder"));
  const auto dropped = taken.openTransactionalStream({});
  fs::create_directory(native("folder"));
  EXPECT_THROW(dropped->close(StreamClosePolicy::Commit), Exception);
}

TEST_F(TransactionTest, NeedsANameToPublish) {
  const StorageIRI root(u"file:///");
  try {
    StorageItem(folder, root).openTransactionalStream({});
    FAIL();
  } catch (const Exception& failure) {
    EXPECT_EQ(failure.getErrorCode(), ErrorCode::InvalidLocation);
    EXPECT_EQ(failure.getStorageIRI(), root);
  }
}

TEST_F(TransactionTest, KeepsThePermissionsOfWhatItReplaces) {
  takenAway = 0;
  const ReplacedCalls recording(recordingPermissions);
  const WithUmask outer(0);
  for (const mode_t mask : {0u, 022u, 077u})
    for (const mode_t mode : {0600u, 0644u, 0444u, 0755u, 0u, 0777u, 01600u, 02755u, 04755u}) {
      SCOPED_TRACE(testing::Message() << std::oct << "mode " << mode << ", umask " << mask);
      const WithUmask inner(mask);
      fs::remove(native("file"));
      put("file", "old");
      ASSERT_EQ(chmod(native("file").c_str(), mode), 0);
      const auto stream = child(u"file").openTransactionalStream({});
      write(*stream, "new");
      for (const auto& name : names())
        EXPECT_EQ(modeOf(name), name == "file" ? mode : mode & 0777);
      stream->close(StreamClosePolicy::Commit);
      EXPECT_EQ(modeOf("file"), mode & 0777);
      EXPECT_EQ(names(), std::vector<std::string>{"file"});
      child(u"new").openTransactionalStream({})->close(StreamClosePolicy::Commit);
      EXPECT_EQ(modeOf("new"), 0666 & ~mask);
      fs::remove(native("new"));
    }
  EXPECT_EQ(takenAway, 0u);
}

TEST_F(TransactionTest, WritesThroughLinks) {
  fs::create_directories(native("real/inside"));
  fs::create_directory_symlink("real/inside", native("way"));
  const struct {
    const char* text;    ///< of the link; '@' stands for the test's folder
    const char* target;  ///< that it leads to
  } cases[] = {
      {"real/target", "real/target"},
      {"@/real/target", "real/target"},
      {"@//real/./target", "real/target"},
      {"chain", "real/inside/target"},
      {"way/target", "real/inside/target"},
      {"way/../target", "real/target"},  // '..' is where the link has led to
      {"100% #1?", "100% #1?"},
      {"\xff", "\xff"},
  };
  const WithUmask mask(022);
  fs::create_symlink("./way/next", native("chain"));
  fs::create_symlink("target", native("real/inside/next"));
  for (const auto& [text, target] : cases)
    for (const bool isDangling : {false, true}) {
      SCOPED_TRACE(testing::Message() << text << (isDangling ? ", dangling" : ""));
      const auto beside = fs::path(native(target)).parent_path();
      const auto linkText = text[0] == '@' ? path + (text + 1) : text;
      fs::create_symlink(linkText, native("link"));
      if (!isDangling) {
        put(target, "old");
        ASSERT_EQ(chmod(native(target).c_str(), 0600), 0);
      }
      const auto entriesBeside = [&] { return std::distance(fs::directory_iterator(beside), {}); };
      const auto before = entriesBeside();
      const auto stream = child(u"link").openTransactionalStream({});
      write(*stream, "new");
      EXPECT_EQ(entriesBeside(), before + 1);
      stream->close(StreamClosePolicy::Commit);
      EXPECT_EQ(fs::read_symlink(native("link")), linkText);
      EXPECT_EQ(content(target), "new");
      EXPECT_FALSE(fs::is_symlink(native(target)));
      EXPECT_EQ(modeOf(target), isDangling ? 0644u : 0600u);
      fs::remove(native(target));
      fs::remove(native("link"));
    }
}

TEST_F(TransactionTest, KeepsTheGroupOrGivesItNoMoreThanOthersHave) {
  constexpr gid_t foreign = 4242;
  const WithUmask mask(0);
  put("file", "old");
  if (chown(native("file").c_str(), static_cast<uid_t>(-1), foreign) != 0)
    GTEST_SKIP() << "only root gives files to a group that it is not in";
  ASSERT_EQ(chmod(native("file").c_str(), 0664), 0);
  ASSERT_EQ(chmod(path.c_str(), 0777), 0);
  const auto expectAfterCommit = [&](mode_t mode, gid_t group) {
    child(u"file").openTransactionalStream({})->close(StreamClosePolicy::Commit);
    struct stat status;
    ASSERT_EQ(stat(native("file").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode);
    EXPECT_EQ(status.st_gid, group);
  };
  expectAfterCommit(0664, foreign);
  const WithoutPrivileges nobody;
  expectAfterCommit(0644, getegid());
}

TEST_F(TransactionTest, RefusesLinksWhoseTextLeadsElsewhere) {
  fs::create_symlink("nowhere/", native("link"));
  EXPECT_EQ(codeThrownAt(child(u"link"), [&] { child(u"link").openTransactionalStream({}); }),
            ErrorCode::InvalidLocation);
  put("gone", "x");
  const int held = open(native("gone").c_str(), O_RDONLY);
  ASSERT_NE(held, -1);
  fs::remove(native("gone"));
  const StorageItem nameless(folder, StorageIRI(u"file:///proc/self/fd/" + fl::i18n::to_ustring(std::to_string(held))));
  EXPECT_EQ(codeThrownAt(nameless, [&] { nameless.openTransactionalStream({}); }), ErrorCode::InvalidLocation);
  close(held);
  EXPECT_EQ(names(), std::vector<std::string>{"link"});
}

TEST_F(TransactionTest, ReplacesTheFileThatItWasOpenedFor) {
  put("first", "old");
  put("second", "other");
  fs::create_hard_link(native("first"), native("same"));
  fs::create_symlink("first", native("link"));
  const auto stream = child(u"link").openTransactionalStream({});
  write(*stream, "new");
  fs::remove(native("link"));
  fs::create_symlink("second", native("link"));
  stream->close(StreamClosePolicy::Commit);
  EXPECT_EQ(content("first"), "new");
  EXPECT_EQ(content("second"), "other");
  EXPECT_EQ(content("same"), "old");
}

TEST_F(TransactionTest, LeavesNothingBehindWhenItCannotBeOpened) {
  put("file", "old");
  ASSERT_EQ(chmod(native("file").c_str(), 0666), 0);
  const WithUmask mask(022);
  const auto open = [this](ByteStreamCreate create) {
    try {
      child(u"file").openTransactionalStream({.create = create});
    } catch (const ByteStreamOpenFailure& failure) {
      return failure.getErrorCode();
    }
    return ErrorCode::Unknown;
  };
  EXPECT_EQ(open(ByteStreamCreate::NeverCreate), ErrorCode::ResourceNotFound);  // of the scratch file
  {
    const ReplacedCalls replaced(withoutPermissions);
    EXPECT_EQ(open(ByteStreamCreate::Create), ErrorCode::PermissionDenied);
  }
  EXPECT_EQ(names(), std::vector<std::string>{"file"});
  EXPECT_EQ(content("file"), "old");
}

TEST_F(TransactionTest, CopiesAtomically) {
  put("source", std::string(9 * 1024 * 1024, 'x'));
  put("target", "old");
  int asked = 0;
  CopyFileOptions options{
      .replacementPolicy = ReplacementPolicy::Overwrite,
      .transactionPolicy = TransactionPolicy::Atomic,
      .interruptCallback = [&] { return ++asked < 2 ? InterruptSignal::Continue : InterruptSignal::Abort; }};
  EXPECT_EQ(child(u"source").copyFile(child(u"target"), options), TransactionStatus::Aborted);
  EXPECT_EQ(content("target"), "old");
  options.interruptCallback = nullptr;
  EXPECT_EQ(child(u"source").copyFile(child(u"target"), options), TransactionStatus::Completed);
  EXPECT_EQ(content("target"), content("source"));
  EXPECT_EQ(names().size(), 2u);
}

TEST_F(TransactionTest, EndsOnceThoughManyThreadsCloseIt) {
  for (int round = 0; round < 100; ++round) {
    std::atomic<int> ended = 0;
    std::shared_ptr<ByteStream> inner = child(u"file").openStream({});
    GenericTransactionalStream<ByteStream> stream(inner, [&](const StreamClosePolicy&) { ++ended; });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
      threads.emplace_back([&] { stream.close(StreamClosePolicy::Commit); });
    for (auto& thread : threads)
      thread.join();
    EXPECT_EQ(ended, 1);
  }
}

/// Loses what was written when it is closed, and does not know to be closed twice.
class UnclosableStream : public ByteStream {
  std::int64_t doRead(char*, std::int64_t) override { return -1; }
  std::int64_t doWrite(const char*, std::int64_t count) override { return count; }
  std::streampos doSeek(std::int64_t, int) override { return 0; }
  void doClose() override { throw ByteStreamCloseFailure(ErrorCode::NoSpaceLeft); }
};

TEST_F(TransactionTest, NeverCommitsWhatCouldNotBeClosed) {
  std::vector<StreamClosePolicy> ended;
  GenericTransactionalStream<ByteStream> stream(std::make_shared<UnclosableStream>(),
                                                [&](const StreamClosePolicy& policy) { ended.push_back(policy); });
  for (int attempt = 0; attempt < 2; ++attempt)
    EXPECT_THROW(stream.close(StreamClosePolicy::Commit), ByteStreamCloseFailure);
  EXPECT_TRUE(ended.empty());
  stream.close(StreamClosePolicy::Abort);
  EXPECT_EQ(ended, std::vector<StreamClosePolicy>{StreamClosePolicy::Abort});
}

TEST_F(TransactionTest, TriesASecondTimeToCleanUpWhenItIsDropped) {
  int attempts = 0;
  {
    std::shared_ptr<ByteStream> inner = child(u"file").openStream({});
    const GenericTransactionalStream<ByteStream> stream(inner, [&](const StreamClosePolicy& policy) {
      EXPECT_EQ(policy, StreamClosePolicy::Abort);
      if (++attempts == 1)
        throw std::runtime_error("busy");
    });
  }
  EXPECT_EQ(attempts, 2);
}

}  // namespace
}  // namespace foundation::storage::backend::local
