#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>

namespace foundation::storage::testing::detail {
namespace {

constexpr std::int64_t fiveGigabytes = std::int64_t{5} << 30;

/// A file that is all gap, but for its last bytes.
void putFarAway(const StorageItem& file) {
  const auto stream = file.openStream(patching);
  EXPECT_EQ(stream->seek(fiveGigabytes, std::ios_base::beg), std::streampos(fiveGigabytes));
  writeAll(*stream, "end");
  stream->close();
}

std::string tailOf(const StorageItem& file, std::int64_t count) {
  const auto stream = file.openReadOnlyStream();
  stream->seek(-count, std::ios_base::end);
  return readAll(*stream);
}

}  // namespace

CheckGroup hugeFileChecks() {
  return {"HugeFile",
          {Capability::Write, Capability::RandomAccess, Capability::HugeFiles},
          {
              {"TellsItsSize",
               [](Store& s) {
                 putFarAway(s.item(u"a"));
                 EXPECT_EQ(s.item(u"a").getFileAttributes().getSize(), static_cast<std::uint64_t>(fiveGigabytes) + 3);
               }},
              {"ReadsBeyond4Gigabytes",
               [](Store& s) {
                 putFarAway(s.item(u"a"));
                 EXPECT_EQ(tailOf(s.item(u"a"), 5), std::string("\0\0end", 5));
               }},
              {"TellsPositionsBeyond4Gigabytes",
               [](Store& s) {
                 putFarAway(s.item(u"a"));
                 const auto stream = s.item(u"a").openReadOnlyStream();
                 EXPECT_EQ(stream->seek(0, std::ios_base::end), std::streampos(fiveGigabytes + 3));
                 EXPECT_EQ(stream->seek(-4, std::ios_base::cur), std::streampos(fiveGigabytes - 1));
               }},
              {"AppendsBeyond4Gigabytes",
               [](Store& s) {
                 putFarAway(s.item(u"a"));
                 const auto stream = s.item(u"a").openStream(appending);
                 writeAll(*stream, "ing");
                 stream->close();
                 EXPECT_EQ(tailOf(s.item(u"a"), 6), "ending");
               },
               {Capability::Append}},
              {"IsTruncatedBeyond4Gigabytes",
               [](Store& s) {
                 putFarAway(s.item(u"a"));
                 s.item(u"a").truncateToSize(static_cast<std::uint64_t>(fiveGigabytes) + 1);
                 EXPECT_EQ(tailOf(s.item(u"a"), 1), "e");
                 s.item(u"a").truncateToSize(static_cast<std::uint64_t>(fiveGigabytes) + 100);
                 EXPECT_EQ(s.item(u"a").getFileAttributes().getSize(), static_cast<std::uint64_t>(fiveGigabytes) + 100);
               }},
              {"MovesAtOnce",
               [](Store& s) {
                 putFarAway(s.item(u"a"));
                 s.item(u"a").moveFile(s.item(u"b").getLocation(), ReplacementPolicy::NoClobber);
                 EXPECT_EQ(tailOf(s.item(u"b"), 3), "end");
               }},
              {"ShowsItsSizeInListings",
               [](Store& s) {
                 putFarAway(s.item(u"a"));
                 const auto listing = s.folder().listFiles({});
                 listing->next();
                 EXPECT_EQ(listing->current().getFileAttributes()->getSize(),
                           static_cast<std::uint64_t>(fiveGigabytes) + 3);
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
