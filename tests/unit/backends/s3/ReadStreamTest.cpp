#include "StreamFixture.h"

#include <foundation/storage/testing/Together.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <ios>
#include <memory>
#include <mutex>
#include <random>

namespace foundation::storage::backend::s3::detail::stream {
namespace {

using namespace testing::http;
using namespace std::chrono_literals;

constexpr auto fromBegin = static_cast<int>(std::ios_base::beg);

/// Makes a change to the answers that give content from there on, up to `end`; so often at most.
Fault changingFrom(std::size_t begin, std::size_t end, int count, ScriptedAnswer (*change)(const ScriptedAnswer&)) {
  const auto left = std::make_shared<std::atomic<int>>(count);
  return [=](const auto& request, const auto& act) {
    const auto first = std::stoull(request.header("range").substr(6));  // "bytes=FIRST-LAST"
    const auto answer = act(request);
    return first >= begin && first < end && (*left)-- > 0 ? change(answer) : answer;
  };
}

ScriptedAnswer flipped(const ScriptedAnswer& answer) { return answer.flippedAt(10); }
ScriptedAnswer cutOff(const ScriptedAnswer& answer) { return answer.cutOffAfter(10); }
ScriptedAnswer stalled(const ScriptedAnswer& answer) { return answer.stalledAtOnce(); }

class ReadStreamTest : public StreamTest {
 protected:
  /// How many bytes of content were asked for.
  std::uint64_t bytesAsked() const {
    std::uint64_t sum = 0;
    for (const auto& request : server.requests()) {
      const auto range = request.header("range");  // "bytes=FIRST-LAST"
      sum += std::stoull(range.substr(range.find('-') + 1)) - std::stoull(range.substr(6)) + 1;
    }
    return sum;
  }

  /// Stores an object as others do: of parts of which the object says nothing, or something else.
  void putInParts(const wire::Headers& headers, const std::vector<std::string>& parts) const {
    const auto client = makeClient(mebi);
    const auto upload = client.beginUpload("a", headers);
    std::vector<wire::Part> stored;
    std::uint64_t size = 0;
    for (const auto& part : parts) {
      stored.push_back(client.uploadPart(upload, static_cast<int>(stored.size()) + 1, part));
      size += part.size();
    }
    client.completeUpload(upload, stored, size, client::Existing::Replace);
  }
};

TEST_F(ReadStreamTest, AsksOnceForSmallObjects) {
  for (const auto size : {std::size_t{1}, mebi - 1, mebi}) {
    store.put("a", sample(size));
    const auto requests = store.count("*");
    EXPECT_TRUE(readAll(*openReading(target(8 * mebi))) == sample(size)) << size;
    EXPECT_EQ(store.count("*"), requests + 1) << size;
  }
}

TEST_F(ReadStreamTest, AsksForEachByteOnceInGrowingPieces) {
  const auto bytes = sample(20 * mebi + 7);
  store.put("a", bytes);
  EXPECT_TRUE(readAll(*openReading(target(4 * mebi))) == bytes);
  EXPECT_EQ(bytesAsked(), bytes.size());
  EXPECT_EQ(store.count("*"), 7u) << "1, 2, 2, 4, 4, 4 MiB, and the rest";
}

TEST_F(ReadStreamTest, FetchesMoreAndMorePiecesAtOnce) {
  std::mutex mutex;
  std::condition_variable changed;
  std::size_t arrived = 0;
  before = [&](const std::string& /*operation*/) {
    std::unique_lock lock(mutex);
    const auto number = ++arrived;
    changed.notify_all();
    const auto others = number == 1 ? 1 : number <= 3 ? 3u : 6u;  // that have to come before this is answered
    EXPECT_TRUE(changed.wait_for(lock, 60s, [&] { return arrived >= others; })) << number;
  };
  store.put("a", sample(600 * kibi));
  EXPECT_TRUE(readAll(*openReading(target(100 * kibi, 3))) == sample(600 * kibi));
}

TEST_F(ReadStreamTest, FetchesLittleElsewhere) {
  const auto bytes = sample(20 * mebi);
  store.put("a", bytes);
  const auto stream = openReading(target(8 * mebi));
  for (const auto position : {15 * mebi, 3 * mebi, 20 * mebi - 100}) {
    stream->seek(static_cast<std::int64_t>(position), fromBegin);
    EXPECT_TRUE(readSome(*stream, 4096) == bytes.substr(position, 4096)) << position;
  }
  EXPECT_EQ(bytesAsked(), mebi + 2 * 128 * kibi + 100);
}

TEST_F(ReadStreamTest, ReadsWhatIsThereWhereverItGoes) {
  const auto bytes = sample(mebi);
  store.put("a", bytes);
  const auto stream = openReading(target(64 * kibi, 3));
  std::mt19937 random(1);
  std::size_t position = 0;
  for (int step = 0; step < 500; ++step) {
    if (random() % 4 == 0) {
      position = random() % 2 == 0 ? position + random() % 100'000 : random() % (bytes.size() + 1000);
      stream->seek(static_cast<std::int64_t>(position), fromBegin);
    }
    const auto count = random() % (random() % 8 == 0 ? 300'000 : 3'000);
    const auto expected = position < bytes.size() ? bytes.substr(position, count) : "";
    ASSERT_TRUE(readSome(*stream, count) == expected) << step << ": " << count << " at " << position;
    position += expected.size();
  }
}

TEST_F(ReadStreamTest, FindsDamage) {
  const auto bytes = sample(3 * mebi);
  const auto stored = [&](bool inParts) {
    if (!inParts)
      return store.put("a", bytes);
    const auto stream = openWriting(target(mebi), {});
    writeAll(*stream, bytes);
    stream->close();
  };
  for (const bool inParts : {false, true}) {
    stored(inParts);
    const auto stream = openReading(target(mebi));
    store.failNext("GetObject", 1, damaging(flipped));
    std::string got;
    const auto readOn = [&] {
      for (auto more = readSome(*stream, 10'000); !more.empty(); more = readSome(*stream, 10'000))
        got += more;
    };
    EXPECT_EQ(failure(readOn), ErrorCode::IOError) << inParts;
    EXPECT_LT(got.size(), bytes.size()) << inParts;
    EXPECT_EQ(failure(readOn), ErrorCode::IOError) << "it stays damaged";
    EXPECT_TRUE(readAll(*openReading(target(mebi))) == bytes) << inParts;
  }
}

TEST_F(ReadStreamTest, BelievesOnlyETagsThatFitTheParts) {
  const std::string name(partSizeHeader);
  const std::vector<std::string> three{sample(mebi / 2), sample(mebi), sample(mebi / 2)};
  const std::vector<std::string> two{sample(mebi / 2), sample(3 * mebi / 2)};
  const struct {
    wire::Headers headers;
    std::vector<std::string> parts;
    const char* encryption;
  } cases[] = {{{}, three, "AES256"},
               {{{name, "none"}}, three, "AES256"},
               {{{name, std::to_string(mebi)}}, three, "AES256"},
               {{{name, std::to_string(mebi)}}, two, "aws:kms"}};
  for (const auto& c : cases) {
    putInParts(c.headers, c.parts);
    store.failNext("GetObject", 2, damaging([&](auto answer) {
                     answer.headers.push_back({"x-amz-server-side-encryption", c.encryption});
                     return answer;
                   }));
    std::string bytes;
    for (const auto& part : c.parts)
      bytes += part;
    EXPECT_TRUE(readAll(*openReading(target(mebi))) == bytes) << c.encryption;
  }
}

TEST_F(ReadStreamTest, CanBeReadOnAfterAFailure) {
  const auto bytes = sample(mebi);
  store.put("a", bytes);
  const auto stream = openReading(target(256 * kibi, 2));
  EXPECT_EQ(readSome(*stream, 256 * kibi).size(), 256 * kibi);
  store.failNext("GetObject", 100, changingFrom(256 * kibi, 512 * kibi, 3, cutOff));
  EXPECT_EQ(failure([&] { readSome(*stream, 1); }), ErrorCode::IOError) << "two attempts";
  EXPECT_TRUE(readAll(*stream) == bytes.substr(256 * kibi)) << "and once is tried again";
}

TEST_F(ReadStreamTest, RefusesToMixTwoContents) {
  store.put("a", sample(mebi));
  const auto stream = openReading(target(256 * kibi));
  store.put("a", std::string(mebi, 'n'));
  EXPECT_EQ(failure([&] { readAll(*stream); }), ErrorCode::ResourceInUse);
}

TEST_F(ReadStreamTest, LeavesWhatIsNotNeededAnyMore) {
  const auto bytes = sample(3 * mebi);
  store.put("a", bytes);
  store.failNext("GetObject", 100, changingFrom(768 * kibi, 2 * mebi, 100, stalled));
  const auto stream = openReading(target(256 * kibi, 3));
  readSome(*stream, 512 * kibi + 1);
  server.awaitRequests(5);
  stream->seek(2 * mebi, fromBegin);
  EXPECT_TRUE(readSome(*stream, 1000) == bytes.substr(2 * mebi, 1000));
  stream->close();
  EXPECT_EQ(store.count("GetObject"), 6u) << "the two that stall were not waited for, and not asked for again";
}

TEST_F(ReadStreamTest, RefusesWhatCannotBe) {
  store.put("a", "abc");
  const auto stream = openReading(target(mebi));
  char byte = 0;
  EXPECT_EQ(failure([&] { stream->read(&byte, -1); }), ErrorCode::IOError);
  EXPECT_EQ(failure([&] { stream->write("x", 1); }), ErrorCode::IOError);
  EXPECT_EQ(failure([&] { stream->seek(-1, fromBegin); }), ErrorCode::IOError);
  EXPECT_EQ(failure([&] { stream->seek(0, 3); }), ErrorCode::IOError);
  stream->close();
  stream->close();
  EXPECT_EQ(failure([&] { stream->read(&byte, 1); }), ErrorCode::IOError);
  EXPECT_EQ(failure([&] { stream->seek(0, fromBegin); }), ErrorCode::IOError);
  store.erase("a");
  EXPECT_EQ(failure([&] { openReading(target(mebi)); }), ErrorCode::ResourceNotFound);
}

TEST_F(ReadStreamTest, LeavesOthersAlone) {
  const auto bytes = sample(512 * kibi);
  store.put("a", bytes);
  const auto shared = target(64 * kibi);
  testing::together(50, [&](std::size_t number) {
    const auto stream = openReading(shared);
    if (number % 2 == 0) {
      EXPECT_TRUE(readAll(*stream) == bytes);
    } else {
      readSome(*stream, 1000 * number);  // and drop it with pieces under way
    }
  });
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::stream
