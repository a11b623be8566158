#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>

#include <algorithm>

namespace foundation::storage::testing::detail {

CheckGroup appendChecks() {
  return {"Append",
          {Capability::Write, Capability::Append},
          {
              {"GoesToTheEnd",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 const auto stream = s.item(u"a").openStream(appending);
                 writeAll(*stream, "de");
                 writeAll(*stream, "f");
                 stream->close();
                 EXPECT_EQ(s.content(u"a"), "abcdef");
               }},
              {"MakesAFile",
               [](Store& s) {
                 const auto stream = s.item(u"a").openStream(appending);
                 writeAll(*stream, "abc");
                 stream->close();
                 EXPECT_EQ(s.content(u"a"), "abc");
               }},
              {"DoesNotCreateUnlessAsked",
               [](Store& s) {
                 auto options = appending;
                 options.create = ByteStreamCreate::NeverCreate;
                 EXPECT_TRUE(refusesStream(ErrorCode::ResourceNotFound, s.item(u"a"),
                                           [&] { s.item(u"a").openStream(options); }));
               }},
              {"ToATruncatedFileBeginsAnew",
               [](Store& s) {
                 s.fill({{u"a", "old"}});
                 auto options = appending;
                 options.truncate = ByteStreamTruncate::TruncateExisting;
                 const auto stream = s.item(u"a").openStream(options);
                 writeAll(*stream, "n");
                 stream->close();
                 EXPECT_EQ(s.content(u"a"), "n");
               }},
              {"GoesToTheEndWhateverThePosition",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 const auto stream = s.item(u"a").openStream(appending);
                 stream->seek(0, std::ios_base::beg);
                 writeAll(*stream, "d");
                 stream->close();
                 EXPECT_EQ(s.content(u"a"), "abcd");
               },
               {Capability::RandomAccess}},
              {"OfTwoStreamsLosesNothing",
               [](Store& s) {
                 const auto first = s.item(u"a").openStream(appending);
                 const auto second = s.item(u"a").openStream(appending);
                 for (int round = 0; round < 3; ++round) {
                   writeAll(*first, "1");
                   writeAll(*second, "22");
                 }
                 first->close();
                 second->close();
                 EXPECT_EQ(s.content(u"a").size(), 9u);
               },
               {Capability::RandomAccess}},
              {"NothingLeavesTheFileAsItWas",
               [](Store& s) {
                 s.fill({{u"a", "abc"}});
                 s.item(u"a").openStream(appending)->close();
                 EXPECT_EQ(s.content(u"a"), "abc");
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
