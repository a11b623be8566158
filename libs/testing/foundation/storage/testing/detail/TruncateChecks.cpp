#include <foundation/storage/testing/detail/Check.h>

namespace foundation::storage::testing::detail {
namespace {

/// What `content` becomes at that size.
std::string resized(std::string content, std::size_t size) {
  content.resize(size, '\0');
  return content;
}

void expectTruncation(Store& s, std::size_t from, std::size_t to) {
  const auto content = sample(from);
  put(s.item(u"a"), content);
  s.item(u"a").truncateToSize(to);
  EXPECT_TRUE(s.content(u"a") == resized(content, to)) << "from " << from << " to " << to;
  EXPECT_EQ(s.names(), Names{u"a"});
}

}  // namespace

CheckGroup truncateChecks() {
  return {"Truncate",
          {Capability::Write},
          {
              {"ToTheSameSizeKeepsAll", [](Store& s) { expectTruncation(s, 10, 10); }},
              {"CutsOff", [](Store& s) { expectTruncation(s, 10, 4); }},
              {"ToNothing", [](Store& s) { expectTruncation(s, 10, 0); }},
              {"OfAnEmptyFileToNothing", [](Store& s) { expectTruncation(s, 0, 0); }},
              {"FillsUpWithZeros", [](Store& s) { expectTruncation(s, 10, 25); }},
              {"FillsUpAnEmptyFile", [](Store& s) { expectTruncation(s, 0, 25); }},
              {"CutsOffAroundTheChunkOfTheDefault",
               [](Store& s) {
                 for (const std::size_t size : {131071u, 131072u, 131073u, 262144u})
                   expectTruncation(s, 300'000, size);
               }},
              {"FillsUpAroundTheChunkOfTheDefault",
               [](Store& s) {
                 for (const std::size_t size : {131082u, 131083u, 300'000u})
                   expectTruncation(s, 11, size);
               }},
              {"ForgetsWhatItCutOff",
               [](Store& s) {
                 put(s.item(u"a"), "abcdef");
                 s.item(u"a").truncateToSize(2);
                 s.item(u"a").truncateToSize(6);
                 EXPECT_EQ(s.content(u"a"), std::string("ab\0\0\0\0", 6));
               }},
              {"TellsTheNewSize",
               [](Store& s) {
                 put(s.item(u"a"), "abcdef");
                 s.item(u"a").truncateToSize(4);
                 EXPECT_EQ(s.item(u"a").getFileAttributes().getSize(), 4u);
               }},
              {"AMissingFileIsRefused",
               [](Store& s) {
                 EXPECT_TRUE(
                     refusesStream(ErrorCode::ResourceNotFound, s.item(u"a"), [&] { s.item(u"a").truncateToSize(1); }));
                 EXPECT_EQ(s.names(), Names{});
               }},
              {"AFolderIsRefused",
               [](Store& s) {
                 s.fill({{u"a/b", "old"}});
                 EXPECT_TRUE(
                     refusesStream(ErrorCode::InvalidLocation, s.item(u"a"), [&] { s.item(u"a").truncateToSize(1); }));
                 EXPECT_EQ(s.content(u"a/b"), "old");
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
