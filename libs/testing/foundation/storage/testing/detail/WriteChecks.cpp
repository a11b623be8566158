#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>

namespace foundation::storage::testing::detail {
namespace {

ByteStreamOpenOptions neverCreating(ByteStreamTruncate truncate) {
  auto options = replacing;
  options.create = ByteStreamCreate::NeverCreate;
  options.truncate = truncate;
  return options;
}

}  // namespace

CheckGroup writeChecks() {
  return {"Write",
          {Capability::Write},
          {
              {"MakesAFile",
               [](Store& s) {
                 put(s.item(u"a"), "content");
                 EXPECT_EQ(s.content(u"a"), "content");
                 EXPECT_EQ(s.names(), Names{u"a"});
               }},
              {"NothingMakesAnEmptyFile",
               [](Store& s) {
                 put(s.item(u"a"), "");
                 EXPECT_TRUE(s.item(u"a").fileExists());
                 EXPECT_EQ(s.content(u"a"), "");
               }},
              {"ReplacesAllThatWasThere",
               [](Store& s) {
                 s.fill({{u"a", "a long old content"}});
                 put(s.item(u"a"), "new");
                 EXPECT_EQ(s.content(u"a"), "new");
               }},
              {"KeepsWhatItDoesNotReach",
               [](Store& s) {
                 s.fill({{u"a", "abcdef"}});
                 auto options = replacing;
                 options.truncate = ByteStreamTruncate::PreserveExisting;
                 const auto stream = s.item(u"a").openStream(options);
                 writeAll(*stream, "XY");
                 stream->close();
                 EXPECT_EQ(s.content(u"a"), "XYcdef");
               },
               {Capability::RandomAccess}},
              {"InPiecesGoesOnWhereItEnded",
               [](Store& s) {
                 const auto bytes = sample(5000);
                 const auto stream = s.item(u"a").openStream(replacing);
                 for (std::size_t at = 0; at < bytes.size(); at += 77)
                   writeAll(*stream, std::string_view(bytes).substr(at, 77));
                 stream->close();
                 EXPECT_TRUE(s.content(u"a") == bytes);
               }},
              {"NoBytesChangesNothing",
               [](Store& s) {
                 const auto stream = s.item(u"a").openStream(replacing);
                 writeAll(*stream, "a");
                 EXPECT_EQ(stream->write("x", 0), 0);
                 writeAll(*stream, "b");
                 stream->close();
                 EXPECT_EQ(s.content(u"a"), "ab");
               }},
              {"SeveralMegabytes",
               [](Store& s) {
                 put(s.item(u"a"), sample(severalBlocks));
                 EXPECT_TRUE(s.content(u"a") == sample(severalBlocks));
               }},
              {"OnlyIsNoReading",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 auto options = replacing;
                 options.truncate = ByteStreamTruncate::PreserveExisting;
                 char byte;
                 EXPECT_EQ(s.item(u"a").openStream(options)->read(&byte, 1), -1);
               },
               {Capability::RandomAccess}},
              {"DoesNotCreateUnlessAsked",
               [](Store& s) {
                 EXPECT_TRUE(refusesStream(ErrorCode::ResourceNotFound, s.item(u"a"), [&] {
                   s.item(u"a").openStream(neverCreating(ByteStreamTruncate::TruncateExisting));
                 }));
                 EXPECT_EQ(s.names(), Names{});
               }},
              {"DoesNotCreateUnlessAskedToPatch",
               [](Store& s) {
                 EXPECT_TRUE(refusesStream(ErrorCode::ResourceNotFound, s.item(u"a"), [&] {
                   s.item(u"a").openStream(neverCreating(ByteStreamTruncate::PreserveExisting));
                 }));
                 EXPECT_EQ(s.names(), Names{});
               },
               {Capability::RandomAccess}},
              {"OpensWhatExistsWithoutCreating",
               [](Store& s) {
                 s.fill({{u"a", "old"}});
                 const auto stream = s.item(u"a").openStream(neverCreating(ByteStreamTruncate::TruncateExisting));
                 writeAll(*stream, "n");
                 stream->close();
                 EXPECT_EQ(s.content(u"a"), "n");
               }},
              {"IsRefusedInAMissingFolder",
               [](Store& s) {
                 EXPECT_TRUE(refusesStream(ErrorCode::ResourceNotFound, s.item(u"a/b"),
                                           [&] { put(s.item(u"a/b"), "content"); }));
                 EXPECT_EQ(s.names(), Names{});
               }},
              {"IsRefusedForAFolder",
               [](Store& s) {
                 s.fill({{u"a/b", "old"}});
                 EXPECT_TRUE(
                     refusesStream(ErrorCode::InvalidLocation, s.item(u"a"), [&] { put(s.item(u"a"), "content"); }));
                 EXPECT_EQ(s.content(u"a/b"), "old");
               }},
              {"IsRefusedBelowAFile",
               [](Store& s) {
                 s.fill({{u"a", "old"}});
                 EXPECT_TRUE(refusesStream(ErrorCode::InvalidLocation, s.item(u"a/b"),
                                           [&] { put(s.item(u"a/b"), "content"); }));
                 EXPECT_EQ(s.content(u"a"), "old");
               }},
              {"NothingAfterClosing",
               [](Store& s) {
                 const auto stream = s.item(u"a").openStream(replacing);
                 writeAll(*stream, "abc");
                 stream->close();
                 EXPECT_TRUE(failsAsStream([&] { stream->write("x", 1); }));
                 EXPECT_EQ(s.content(u"a"), "abc");
               }},
              {"ClosingAgainDoesNothing",
               [](Store& s) {
                 const auto stream = s.item(u"a").openStream(replacing);
                 writeAll(*stream, "abc");
                 stream->close();
                 EXPECT_NO_THROW(stream->close());
                 EXPECT_EQ(s.content(u"a"), "abc");
               }},
              {"TheLastOfTwoWritersWins",
               [](Store& s) {
                 put(s.item(u"a"), "first, and long");
                 put(s.item(u"a"), "second");
                 EXPECT_EQ(s.content(u"a"), "second");
               }},
              {"ManyFiles",
               [](Store& s) {
                 for (char16_t letter = u'a'; letter <= u'z'; ++letter)
                   put(s.item({letter}), std::string(letter, 'x'));
                 EXPECT_EQ(s.names().size(), 26u);
                 for (char16_t letter = u'a'; letter <= u'z'; ++letter)
                   EXPECT_EQ(s.content({letter}).size(), letter);
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
