#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>

#include <limits>
#include <utility>

namespace foundation::storage::testing::detail {
namespace {

constexpr auto fromBegin = static_cast<int>(std::ios_base::beg);
constexpr auto fromHere = static_cast<int>(std::ios_base::cur);
constexpr auto fromEnd = static_cast<int>(std::ios_base::end);

std::unique_ptr<provider::ByteStream> openAlphabet(Store& s) {
  s.fill({{u"a", "abcdefghij"}});
  return s.item(u"a").openReadOnlyStream();
}

/// That many bytes, unless the end comes first; a stream may give them one by one.
std::string readSome(provider::ByteStream& stream, std::size_t count) {
  std::string bytes(count, '\0');
  std::size_t done = 0;
  while (done < count) {
    const auto got = stream.read(bytes.data() + done, static_cast<std::int64_t>(count - done));
    if (got <= 0)
      break;
    done += static_cast<std::size_t>(got);
  }
  return bytes.substr(0, done);
}

}  // namespace

CheckGroup seekChecks() {
  return {"Seek",
          {},
          {
              {"FromTheBeginning",
               [](Store& s) {
                 const auto stream = openAlphabet(s);
                 EXPECT_EQ(stream->seek(3, fromBegin), std::streampos(3));
                 EXPECT_EQ(readSome(*stream, 2), "de");
                 EXPECT_EQ(stream->seek(0, fromBegin), std::streampos(0));
                 EXPECT_EQ(readAll(*stream), "abcdefghij");
               }},
              {"FromTheCurrentPosition",
               [](Store& s) {
                 const auto stream = openAlphabet(s);
                 EXPECT_EQ(readSome(*stream, 4), "abcd");
                 EXPECT_EQ(stream->seek(2, fromHere), std::streampos(6));
                 EXPECT_EQ(readSome(*stream, 1), "g");
                 EXPECT_EQ(stream->seek(-5, fromHere), std::streampos(2));
                 EXPECT_EQ(readSome(*stream, 1), "c");
               }},
              {"FromTheEnd",
               [](Store& s) {
                 const auto stream = openAlphabet(s);
                 EXPECT_EQ(stream->seek(-3, fromEnd), std::streampos(7));
                 EXPECT_EQ(readAll(*stream), "hij");
                 EXPECT_EQ(stream->seek(0, fromEnd), std::streampos(10));
               }},
              {"TellsThePosition",
               [](Store& s) {
                 const auto stream = openAlphabet(s);
                 readSome(*stream, 4);
                 EXPECT_EQ(stream->seek(0, fromHere), std::streampos(4));
               }},
              {"BeyondTheEndReadsNothing",
               [](Store& s) {
                 const auto stream = openAlphabet(s);
                 EXPECT_EQ(stream->seek(100, fromBegin), std::streampos(100));
                 EXPECT_EQ(readSome(*stream, 1), "");
                 stream->seek(9, fromBegin);
                 EXPECT_EQ(readAll(*stream), "j");
               }},
              {"BeforeTheBeginningFailsAndMovesNothing",
               [](Store& s) {
                 const auto stream = openAlphabet(s);
                 readSome(*stream, 4);
                 EXPECT_TRUE(failsAsStream([&] { stream->seek(-1, fromBegin); }));
                 EXPECT_TRUE(failsAsStream([&] { stream->seek(-5, fromHere); }));
                 EXPECT_TRUE(failsAsStream([&] { stream->seek(-11, fromEnd); }));
                 EXPECT_EQ(readSome(*stream, 1), "e");
               }},
              {"BeyondAllPositionsFailsAndMovesNothing",
               [](Store& s) {
                 const auto stream = openAlphabet(s);
                 readSome(*stream, 4);
                 constexpr auto most = std::numeric_limits<std::int64_t>::max();
                 constexpr auto least = std::numeric_limits<std::int64_t>::min();
                 const std::pair<std::int64_t, int> seeks[] = {
                     {most, fromHere}, {most, fromEnd}, {least, fromBegin}, {least, fromHere}, {least, fromEnd}};
                 for (const auto& seek : seeks)
                   EXPECT_TRUE(failsAsStream([&] { stream->seek(seek.first, seek.second); }))
                       << seek.first << " from " << seek.second;
                 EXPECT_EQ(readSome(*stream, 1), "e");
               }},
              {"GoesOnAfterTheEndWasSeen",
               [](Store& s) {
                 const auto stream = openAlphabet(s);
                 readAll(*stream);
                 stream->seek(8, fromBegin);
                 EXPECT_EQ(readAll(*stream), "ij");
               }},
              {"FromAnUnknownOriginFails",
               [](Store& s) {
                 const auto stream = openAlphabet(s);
                 EXPECT_TRUE(failsAsStream([&] { stream->seek(0, 3); }));
                 EXPECT_TRUE(failsAsStream([&] { stream->seek(0, -1); }));
               }},
              {"InAnEmptyFile",
               [](Store& s) {
                 s.fill({{u"a", ""}});
                 const auto stream = s.item(u"a").openReadOnlyStream();
                 EXPECT_EQ(stream->seek(0, fromEnd), std::streampos(0));
                 EXPECT_EQ(readSome(*stream, 1), "");
               }},
              {"AcrossMegabytes",
               [](Store& s) {
                 const auto bytes = sample(severalBlocks);
                 s.fill({{u"a", bytes}});
                 const auto stream = s.item(u"a").openReadOnlyStream();
                 for (const std::size_t position : {severalBlocks - 1, std::size_t{4194303}, std::size_t{65536}}) {
                   stream->seek(static_cast<std::int64_t>(position), fromBegin);
                   EXPECT_EQ(readSome(*stream, 1), bytes.substr(position, 1)) << position;
                 }
               }},
              {"WritesOverWhatIsThere",
               [](Store& s) {
                 s.fill({{u"a", "abcdefghij"}});
                 const auto stream = s.item(u"a").openStream(patching);
                 stream->seek(3, fromBegin);
                 writeAll(*stream, "DE");
                 stream->close();
                 EXPECT_EQ(s.content(u"a"), "abcDEfghij");
               },
               {Capability::Write, Capability::RandomAccess}},
              {"WritesBeyondTheEndLeaveZeros",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 const auto stream = s.item(u"a").openStream(patching);
                 stream->seek(5, fromBegin);
                 EXPECT_EQ(contentOf(s.item(u"a")), "abc") << "seeking changes nothing";
                 writeAll(*stream, "f");
                 stream->close();
                 EXPECT_EQ(s.content(u"a"), std::string("abc\0\0f", 6));
               },
               {Capability::Write, Capability::RandomAccess}},
              {"ReadsBackWhatIsBeingWritten",
               [](Store& s) {
                 const auto stream = s.item(u"a").openStream(patching);
                 writeAll(*stream, "abcdef");
                 stream->seek(2, fromBegin);
                 EXPECT_EQ(readSome(*stream, 2), "cd");
                 writeAll(*stream, "E");
                 stream->seek(0, fromBegin);
                 EXPECT_EQ(readAll(*stream), "abcdEf");
                 stream->close();
               },
               {Capability::Write, Capability::RandomAccess}},
              {"NothingAfterClosing",
               [](Store& s) {
                 const auto stream = openAlphabet(s);
                 stream->close();
                 EXPECT_TRUE(failsAsStream([&] { stream->seek(0, fromBegin); }));
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
