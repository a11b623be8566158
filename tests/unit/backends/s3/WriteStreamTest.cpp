#include "StreamFixture.h"

#include <foundation/storage/backend/s3/detail/stream/ObjectWriter.h>
#include <foundation/storage/provider/TransactionalStream.h>
#include <foundation/storage/testing/Together.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <ios>
#include <stdexcept>

namespace foundation::storage::backend::s3::detail::stream {
namespace {

using namespace testing::http;
using namespace std::chrono_literals;
using provider::StreamClosePolicy;
using Operations = std::vector<std::string>;

class WriteStreamTest : public StreamTest {
 protected:
  /// What is there, with its headers.
  WriteMode keeping(const std::string& bytes) const {
    const auto client = makeClient(mebi);
    client.put("a", bytes, client::Existing::Replace, {{"content-type", "text/x"}, {"x-amz-meta-who", "me"}});
    WriteMode mode;
    mode.kept = client.head("a");
    return mode;
  }
  std::unique_ptr<provider::TransactionalStream> transaction(const std::string& bytes, WriteMode mode = {}) const {
    auto stream = openTransaction(target(100 * kibi), std::move(mode));
    writeAll(*stream, bytes);
    return stream;
  }
};

TEST_F(WriteStreamTest, SendsOneRequestOrTheParts) {
  const struct {
    std::size_t size;
    std::size_t parts;
  } cases[] = {{0, 0}, {1, 0}, {100 * kibi, 0}, {100 * kibi + 1, 2}, {550 * kibi, 6}, {1000 * kibi, 10}};
  for (const auto& c : cases) {
    const auto bytes = sample(c.size);
    const auto requests = store.count("*");
    int published = 0;
    const auto stream = openWriting(target(100 * kibi), {}, [&] { ++published; });
    for (std::size_t at = 0; at < bytes.size(); at += 7777)
      writeAll(*stream, std::string_view(bytes).substr(at, 7777));
    EXPECT_NE(content(), bytes) << "shown too early";
    EXPECT_EQ(published, 0);
    stream->close();
    stream->close();
    EXPECT_EQ(published, 1);
    EXPECT_EQ(store.count("*") - requests, c.parts == 0 ? 1 : c.parts + 2) << c.size;
    EXPECT_TRUE(content() == bytes) << c.size;
    EXPECT_TRUE(readAll(*openReading(target(100 * kibi))) == bytes) << c.size;
  }
}

TEST_F(WriteStreamTest, LeavesTheOldContentOrTheNew) {
  const struct {
    const char* operation;
    std::size_t size;
    std::size_t good;  ///< requests of the operation before the one that goes wrong
  } cases[] = {{"PutObject", 1000, 0},        {"CreateMultipartUpload", 500 * kibi, 0},
               {"UploadPart", 500 * kibi, 0}, {"UploadPart", 500 * kibi, 3},
               {"UploadPart", 500 * kibi, 4}, {"CompleteMultipartUpload", 500 * kibi, 0}};
  for (const auto& c : cases) {
    const auto bytes = sample(c.size);
    const auto write = [&](Fault fault) {
      store.put("a", "old");
      if (c.good > 0)
        store.failNext(c.operation, c.good, damaging([](const auto& answer) { return answer; }));
      store.failNext(c.operation, 1, std::move(fault));
      const auto stream = openWriting(target(100 * kibi), {});
      return failure([&] {
        writeAll(*stream, bytes);
        stream->close();
      });
    };
    EXPECT_EQ(write(failing(403, "AccessDenied")), ErrorCode::PermissionDenied) << c.operation << c.good;
    EXPECT_TRUE(content() == "old") << c.operation << c.good;
    EXPECT_EQ(store.uploads(), Operations{}) << c.operation << c.good;
    if (c.operation == std::string("CreateMultipartUpload"))
      continue;  // nobody can know of an upload whose name was lost
    EXPECT_EQ(write(losingTheAnswer()), std::nullopt) << c.operation << c.good;
    EXPECT_TRUE(content() == bytes) << c.operation << c.good;
    EXPECT_EQ(store.uploads(), Operations{}) << c.operation << c.good;
  }
}

TEST_F(WriteStreamTest, LeavesNothingWhenItIsDropped) {
  store.put("a", "old");
  std::promise<void> opening;
  const auto gate = opening.get_future().share();
  before = [gate](const std::string& operation) {
    if (operation == "UploadPart") {
      EXPECT_EQ(gate.wait_for(60s), std::future_status::ready);
    }
  };
  auto stream = openWriting(target(100 * kibi, 2), {});
  writeAll(*stream, sample(250 * kibi));
  server.awaitRequests(3);
  stream.reset();
  opening.set_value();
  openWriting(target(100 * kibi), {}).reset();
  EXPECT_TRUE(content() == "old");
  EXPECT_EQ(store.uploads(), Operations{});
  EXPECT_EQ(store.count("AbortMultipartUpload"), 1u);
}

TEST_F(WriteStreamTest, TriesTwiceToAbort) {
  store.failNext("CompleteMultipartUpload", 1, failing(403, "AccessDenied"));
  store.failNext("AbortMultipartUpload", 1, failing(403, "AccessDenied"));
  {
    const auto stream = openWriting(target(100 * kibi), {});
    writeAll(*stream, sample(mebi));
    EXPECT_EQ(failure([&] { stream->close(); }), ErrorCode::PermissionDenied);
    EXPECT_EQ(store.uploads(), Operations{"a"});
  }
  EXPECT_EQ(store.uploads(), Operations{});
}

TEST_F(WriteStreamTest, GoesOnBehindWhatIsKept) {
  const struct {
    std::size_t kept;
    std::size_t more;
    Operations operations;
  } cases[] = {
      {10, 0, {}},
      {0, 5, {"PutObject"}},
      {10, 5, {"GetObject", "PutObject"}},
      {10, 1500 * kibi, {"GetObject", "CreateMultipartUpload", "UploadPart", "UploadPart", "CompleteMultipartUpload"}},
      {5 * mebi, 0, {}},
      {5 * mebi, 5, {"CreateMultipartUpload", "UploadPart", "UploadPartCopy", "CompleteMultipartUpload"}},
  };
  for (const auto& c : cases) {
    const auto old = sample(c.kept);
    const auto more = std::string(c.more, 'm');
    auto mode = keeping(old);
    const auto requests = store.operations().size();
    const auto stream = openWriting(target(mebi), std::move(mode));
    EXPECT_EQ(stream->seek(0, std::ios_base::cur), std::streamoff(c.kept));
    writeAll(*stream, more);
    stream->close();
    auto operations = operationsAfter(requests);
    if (operations.size() > 2)
      std::sort(operations.begin() + 1, operations.end() - 1);  // they went at once
    operations.erase(std::unique(operations.begin(), operations.end()), operations.end());
    auto expected = c.operations;
    expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
    EXPECT_EQ(operations, expected) << c.kept << " and " << c.more;
    EXPECT_TRUE(content() == old + more) << c.kept << " and " << c.more;
    EXPECT_EQ(store.get("a")->kept.at("content-type"), "text/x");
    EXPECT_EQ(store.get("a")->kept.at("x-amz-meta-who"), "me");
  }
}

TEST_F(WriteStreamTest, KeepsOnlyWhatItHasFound) {
  for (const auto size : {10 * std::size_t{1}, 5 * mebi}) {
    const auto stream = openWriting(target(mebi), keeping(sample(size)));
    writeAll(*stream, "more");
    store.put("a", "somebody else's");
    EXPECT_EQ(failure([&] { stream->close(); }), ErrorCode::ResourceInUse) << size;
    EXPECT_EQ(content(), "somebody else's") << size;
    EXPECT_EQ(store.uploads(), Operations{}) << size;
  }
}

TEST_F(WriteStreamTest, WritesInOrderOnly) {
  const auto stream = openWriting(target(mebi), {});
  writeAll(*stream, "abc");
  EXPECT_EQ(stream->seek(0, std::ios_base::end), std::streamoff(3));
  EXPECT_EQ(stream->seek(3, std::ios_base::beg), std::streamoff(3));
  for (const auto position : {0, 2, 4})
    EXPECT_EQ(failure([&] { stream->seek(position, std::ios_base::beg); }), ErrorCode::UnsupportedOperation);
  char byte = 0;
  EXPECT_EQ(stream->read(&byte, 1), -1);
  EXPECT_EQ(failure([&] { stream->write("x", -1); }), ErrorCode::IOError);
  stream->close();
  EXPECT_EQ(failure([&] { stream->write("x", 1); }), ErrorCode::IOError);
  EXPECT_EQ(failure([&] { stream->read(&byte, 1); }), ErrorCode::IOError);
  EXPECT_EQ(failure([&] { stream->seek(0, std::ios_base::cur); }), ErrorCode::IOError);
  EXPECT_EQ(content(), "abc");
}

TEST_F(WriteStreamTest, CommitsAgainWhatHasFailed) {
  for (const auto* operation : {"UploadPart", "CompleteMultipartUpload"}) {
    store.put("a", "old");
    const auto stream = transaction(sample(350 * kibi));
    store.failNext(operation, 1, failing(403, "AccessDenied"));
    EXPECT_EQ(failure([&] { stream->close(StreamClosePolicy::Commit); }), ErrorCode::PermissionDenied) << operation;
    EXPECT_TRUE(content() == "old") << operation;
    const auto parts = store.count("UploadPart");
    stream->close(StreamClosePolicy::Commit);
    EXPECT_TRUE(content() == sample(350 * kibi)) << operation;
    EXPECT_LE(store.count("UploadPart"), parts + 2) << "three or four parts are there, and stay";
    stream->close(StreamClosePolicy::Abort);
    EXPECT_TRUE(content() == sample(350 * kibi)) << operation;
  }
}

TEST_F(WriteStreamTest, KnowsItsOwnWhenItCommitsAgain) {
  using client::Existing;
  const struct {
    const char* operation;
    std::size_t size;
    Existing existing;
  } cases[] = {{"PutObject", 10, Existing::Refuse},
               {"CompleteMultipartUpload", 350 * kibi, Existing::Refuse},
               {"CompleteMultipartUpload", 350 * kibi, Existing::Replace}};
  for (const auto& c : cases)
    for (const bool isReplaced : {false, true}) {
      store.erase("a");
      const auto stream = transaction(sample(c.size), {.existing = c.existing});
      store.failNext(c.operation, 2, losingTheAnswer());
      EXPECT_EQ(failure([&] { stream->close(StreamClosePolicy::Commit); }), ErrorCode::IOError) << c.operation;
      if (isReplaced)
        store.put("a", std::string(c.size, 'o'));
      const auto refusal = c.existing == Existing::Refuse ? ErrorCode::ResourceAlreadyExists : ErrorCode::IOError;
      EXPECT_EQ(failure([&] { stream->close(StreamClosePolicy::Commit); }),
                isReplaced ? std::optional(refusal) : std::nullopt)
          << c.operation << isReplaced;
      EXPECT_TRUE(content() == (isReplaced ? std::string(c.size, 'o') : sample(c.size))) << c.operation;
    }
}

TEST_F(WriteStreamTest, DoesNotCommitWhatItHasBegunToAbort) {
  store.put("a", "old");
  const auto stream = transaction(sample(350 * kibi));
  store.failNext("AbortMultipartUpload", 1, failing(403, "AccessDenied"));
  EXPECT_EQ(failure([&] { stream->close(StreamClosePolicy::Abort); }), ErrorCode::PermissionDenied);
  EXPECT_EQ(failure([&] { stream->close(StreamClosePolicy::Commit); }), ErrorCode::IOError);
  stream->close(StreamClosePolicy::Abort);
  EXPECT_EQ(content(), "old");
  EXPECT_EQ(store.uploads(), Operations{});
}

TEST_F(WriteStreamTest, LeavesNothingWhenItIsInterrupted) {
  for (const std::string interrupted : {"CreateMultipartUpload", "UploadPart"}) {
    const auto place = target(100 * kibi, 2);
    before = [=](const std::string& operation) {
      if (operation == interrupted)
        place.client.interrupt().raise();
    };
    const auto stream = openWriting(place, {});
    EXPECT_EQ(failure([&] {
                writeAll(*stream, sample(350 * kibi));
                stream->close();
              }),
              ErrorCode::IOError)
        << interrupted;
    EXPECT_EQ(content(), "(nothing)") << interrupted;
  }
  EXPECT_EQ(store.uploads(), Operations{}) << "that of the first, too, whose name came after the interrupt";
}

TEST_F(WriteStreamTest, AbortsAfterAFailedCommit) {
  store.put("a", "old");
  const auto stream = transaction(sample(350 * kibi));
  store.failNext("CompleteMultipartUpload", 1, failing(403, "AccessDenied"));
  EXPECT_TRUE(failure([&] { stream->close(StreamClosePolicy::Commit); }));
  stream->close(StreamClosePolicy::Abort);
  stream->close(StreamClosePolicy::Commit);
  EXPECT_TRUE(content() == "old");
  EXPECT_EQ(store.uploads(), Operations{});
}

TEST_F(WriteStreamTest, DoesNotCommitWhatCouldNotBeWritten) {
  store.put("a", "old");
  const auto stream = openTransaction(target(100 * kibi, 1), {});
  store.failNext("UploadPart", 1, failing(403, "AccessDenied"));
  writeAll(*stream, sample(150 * kibi));
  EXPECT_EQ(failure([&] { writeAll(*stream, sample(mebi)); }), ErrorCode::PermissionDenied);
  EXPECT_EQ(failure([&] { writeAll(*stream, "x"); }), ErrorCode::PermissionDenied);
  EXPECT_EQ(failure([&] { stream->close(StreamClosePolicy::Commit); }), ErrorCode::PermissionDenied);
  stream->close(StreamClosePolicy::Abort);
  EXPECT_TRUE(content() == "old");
  EXPECT_EQ(store.uploads(), Operations{});
}

TEST_F(WriteStreamTest, EndsOnceThoughManyThreadsCloseIt) {
  std::atomic<int> published = 0;
  const auto stream = openTransaction(target(100 * kibi), {}, [&] { ++published; });
  writeAll(*stream, sample(350 * kibi));
  testing::together(4, [&](std::size_t /*number*/) { stream->close(StreamClosePolicy::Commit); });
  EXPECT_EQ(published, 1);
  EXPECT_EQ(store.count("CompleteMultipartUpload"), 1u);
  EXPECT_TRUE(content() == sample(350 * kibi));
}

TEST_F(WriteStreamTest, CreatesOnlyWhatIsNotThere) {
  for (const auto size : {std::size_t{10}, 350 * kibi}) {
    store.put("a", "old");
    const auto stream = transaction(sample(size), {.existing = client::Existing::Refuse});
    EXPECT_EQ(failure([&] { stream->close(StreamClosePolicy::Commit); }), ErrorCode::ResourceAlreadyExists) << size;
    EXPECT_TRUE(content() == "old") << size;
    store.erase("a");
    stream->close(StreamClosePolicy::Commit);
    EXPECT_TRUE(content() == sample(size)) << size;
  }
}

TEST_F(WriteStreamTest, AsksBeforeItPublishes) {
  bool isAllowed = false;
  WriteMode mode;
  mode.mayPublish = [&] {
    if (!isAllowed)
      throw client::StoreFailure(ErrorCode::InvalidLocation, "A folder is there");
  };
  const auto stream = transaction(sample(350 * kibi), std::move(mode));
  EXPECT_EQ(failure([&] { stream->close(StreamClosePolicy::Commit); }), ErrorCode::InvalidLocation);
  EXPECT_EQ(content(), "(nothing)");
  isAllowed = true;
  stream->close(StreamClosePolicy::Commit);
  EXPECT_TRUE(content() == sample(350 * kibi));
}

TEST_F(WriteStreamTest, LeavesOthersAlone) {
  const auto client = makeClient(64 * kibi);
  const auto name = [](std::size_t number) { return "many/" + std::to_string(number); };
  testing::together(50, [&](std::size_t number) {
    const auto stream = openWriting({client, name(number), provider::StorageIRI(u"s3://bucket/many")}, {});
    writeAll(*stream, sample(300 * kibi + number));
    if (number % 2 == 0)
      stream->close();
  });
  for (std::size_t number = 0; number < 50; ++number)
    EXPECT_TRUE(content(name(number)) == (number % 2 == 0 ? sample(300 * kibi + number) : "(nothing)")) << number;
  EXPECT_EQ(store.uploads(), Operations{});
}

TEST(LimitsTest, PartsHoldTheLargestObject) {
  const auto largest = 5ull << 40;
  for (const auto partSize : {5ull << 20, 8ull << 20, 1ull << 30, 5ull << 30}) {
    std::uint64_t sum = 0;
    for (int number = 1; number <= mostParts; ++number) {
      ASSERT_LE(sizeOfPart(number, partSize), 5ull << 30);
      sum += sizeOfPart(number, partSize);
    }
    EXPECT_GE(sum, largest) << partSize;
  }
}

TEST(LimitsTest, CopiesAreDividedEvenly) {
  const auto partSize = Limits().copiedPart;
  for (const auto size : std::vector<std::uint64_t>{1, 5ull << 20, partSize + 1, 5ull << 30, 5ull << 40}) {
    std::uint64_t end = 0;
    for (const auto& range : divide(size, partSize)) {
      ASSERT_EQ(range.offset, end);
      ASSERT_LE(range.size, 5ull << 30) << size;
      ASSERT_TRUE(range.size >= 5ull << 20 || range.size == size) << size;
      end += range.size;
    }
    EXPECT_EQ(end, size);
  }
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::stream
