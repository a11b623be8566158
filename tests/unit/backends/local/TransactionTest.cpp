// Transactions on real files: what readers see before and after, and what is left behind.

#include "TemporaryFolder.h"

#include <foundation/storage/provider/GenericTransactionalStream.h>

#include <atomic>
#include <regex>
#include <thread>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

class TransactionTest : public LocalTest {
 protected:
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
  fs::create_directory(native("folder"));
  const auto taken = child(u"folder");
  {
    const auto stream = taken.openTransactionalStream({});
    write(*stream, "new");
    EXPECT_EQ(codeThrownAt(taken, [&] { stream->close(StreamClosePolicy::Commit); }), ErrorCode::InvalidLocation);
    EXPECT_EQ(names().size(), 2u);  // the scratch file is still there
    stream->close(StreamClosePolicy::Abort);
    EXPECT_EQ(names().size(), 1u);
  }
  const auto dropped = taken.openTransactionalStream({});
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
