#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>

#include <memory>

namespace foundation::storage::testing::detail {
namespace {

std::string allByteValues() {
  std::string bytes;
  for (int value = 0; value < 256; ++value)
    bytes.push_back(static_cast<char>(value));
  return bytes;
}

/// Reads in pieces of one size.
std::string readInPieces(provider::ByteStream& stream, std::int64_t piece) {
  std::string bytes;
  std::string buffer(static_cast<std::size_t>(piece), '\0');
  for (;;) {
    const auto got = stream.read(buffer.data(), piece);
    EXPECT_LE(got, piece);
    if (got <= 0)
      return bytes;
    bytes.append(buffer, 0, static_cast<std::size_t>(got));
  }
}

}  // namespace

CheckGroup readChecks() {
  return {"Read",
          {},
          {
              {"AWholeFile",
               [](Store& s) {
                 s.fill({{u"a", "content"}});
                 EXPECT_EQ(s.content(u"a"), "content");
               }},
              {"EveryByteValue",
               [](Store& s) {
                 s.fill({{u"a", allByteValues()}});
                 EXPECT_EQ(s.content(u"a"), allByteValues());
               }},
              {"AnEmptyFileEndsAtOnce",
               [](Store& s) {
                 s.fill({{u"a", ""}});
                 char byte;
                 EXPECT_EQ(s.item(u"a").openReadOnlyStream()->read(&byte, 1), -1);
               }},
              {"SeveralMegabytes",
               [](Store& s) {
                 s.fill({{u"a", sample(severalBlocks)}});
                 EXPECT_TRUE(s.content(u"a") == sample(severalBlocks));
               }},
              {"InPieces",
               [](Store& s) {
                 s.fill({{u"a", sample(5000)}});
                 for (const std::int64_t piece : {1, 7, 4096, 5000, 5001}) {
                   const auto stream = s.item(u"a").openReadOnlyStream();
                   EXPECT_TRUE(readInPieces(*stream, piece) == sample(5000)) << piece;
                 }
               }},
              {"TheEndStaysTheEnd",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 const auto stream = s.item(u"a").openReadOnlyStream();
                 EXPECT_EQ(readAll(*stream), "abc");
                 char byte;
                 EXPECT_EQ(stream->read(&byte, 1), -1);
                 EXPECT_EQ(stream->read(&byte, 1), -1);
               }},
              {"NoBytesIsNotTheEnd",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 const auto stream = s.item(u"a").openReadOnlyStream();
                 char byte = 'x';
                 EXPECT_EQ(stream->read(&byte, 0), 0);
                 EXPECT_EQ(byte, 'x');
                 EXPECT_EQ(readAll(*stream), "abc");
               }},
              {"ByTwoStreamsAtTheirOwnPositions",
               [](Store& s) {
                 s.fill({{u"a", "abcdef"}});
                 const auto first = s.item(u"a").openReadOnlyStream();
                 const auto second = s.item(u"a").openReadOnlyStream();
                 std::array<char, 3> buffer{};
                 EXPECT_EQ(first->read(buffer.data(), 3), 3);
                 EXPECT_EQ(readAll(*second), "abcdef");
                 EXPECT_EQ(readAll(*first), "def");
               }},
              {"ByManyStreamsAtOnce",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 std::vector<std::unique_ptr<provider::ByteStream>> streams;
                 for (int count = 0; count < 50; ++count)
                   streams.push_back(s.item(u"a").openReadOnlyStream());
                 for (const auto& stream : streams)
                   EXPECT_EQ(readAll(*stream), "abc");
               }},
              {"OnlyIsNoWriting",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 const auto stream = s.item(u"a").openReadOnlyStream();
                 EXPECT_TRUE(failsAsStream([&] { stream->write("x", 1); }));
                 stream->close();
                 EXPECT_EQ(s.content(u"a"), "abc");
               }},
              {"NothingAfterClosing",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 const auto stream = s.item(u"a").openReadOnlyStream();
                 stream->close();
                 char byte;
                 EXPECT_TRUE(failsAsStream([&] { stream->read(&byte, 1); }));
               }},
              {"ClosingAgainDoesNothing",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 const auto stream = s.item(u"a").openReadOnlyStream();
                 stream->close();
                 EXPECT_NO_THROW(stream->close());
               }},
              {"AMissingFileIsRefused",
               [](Store& s) {
                 EXPECT_TRUE(refusesStream(ErrorCode::ResourceNotFound, s.item(u"a"),
                                           [&] { s.item(u"a").openReadOnlyStream(); }));
               }},
              {"AFileInAMissingFolderIsRefused",
               [](Store& s) {
                 EXPECT_TRUE(refusesStream(ErrorCode::ResourceNotFound, s.item(u"a/b"),
                                           [&] { s.item(u"a/b").openReadOnlyStream(); }));
               }},
              {"AFolderIsRefused",
               [](Store& s) {
                 s.fill({{u"a/b", ""}});
                 EXPECT_TRUE(refusesStream(ErrorCode::InvalidLocation, s.item(u"a"),
                                           [&] { s.item(u"a").openReadOnlyStream(); }));
               }},
              {"BelowAFileIsRefused",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 EXPECT_TRUE(refusesStream(ErrorCode::InvalidLocation, s.item(u"a/b"),
                                           [&] { s.item(u"a/b").openReadOnlyStream(); }));
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
