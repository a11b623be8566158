#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/TransactionalStream.h>
#include <foundation/storage/testing/Together.h>

#include <algorithm>
#include <stdexcept>

namespace foundation::storage::testing::detail {

using provider::StreamClosePolicy;

namespace {

std::unique_ptr<provider::TransactionalStream> openWith(const StorageItem& file, std::string_view bytes) {
  auto stream = file.openTransactionalStream(replacing);
  writeAll(*stream, bytes);
  return stream;
}

}  // namespace

CheckGroup transactionChecks() {
  return {"Transaction",
          {Capability::Write},
          {
              {"CommitMakesAFile",
               [](Store& s) {
                 openWith(s.item(u"a"), "new")->close(StreamClosePolicy::Commit);
                 EXPECT_EQ(s.content(u"a"), "new");
                 EXPECT_EQ(s.names(), Names{u"a"});
               }},
              {"CommitReplacesAFile",
               [](Store& s) {
                 s.fill({{u"a", "a longer old content"}});
                 openWith(s.item(u"a"), "new")->close(StreamClosePolicy::Commit);
                 EXPECT_EQ(s.content(u"a"), "new");
                 EXPECT_EQ(s.names(), Names{u"a"});
               }},
              {"CommitOfNothingMakesAnEmptyFile",
               [](Store& s) {
                 s.fill({{u"a", "old"}});
                 openWith(s.item(u"a"), "")->close(StreamClosePolicy::Commit);
                 EXPECT_EQ(s.content(u"a"), "");
               }},
              {"BeginsEmpty",
               [](Store& s) {
                 s.fill({{u"a", "old content"}});
                 const auto stream = s.item(u"a").openTransactionalStream(patching);
                 writeAll(*stream, "n");
                 stream->close(StreamClosePolicy::Commit);
                 EXPECT_EQ(s.content(u"a"), "n") << "whatever the options say of existing content";
               },
               {Capability::RandomAccess}},
              {"AReaderKeepsToOneContent",
               [](Store& s) {
                 const std::string before(200'000, 'o');
                 s.fill({{u"a", before}});
                 const auto reader = s.item(u"a").openReadOnlyStream();
                 char first = 0;
                 EXPECT_EQ(reader->read(&first, 1), 1);
                 openWith(s.item(u"a"), std::string(100'000, 'n'))->close(StreamClosePolicy::Commit);
                 std::string rest;
                 try {
                   rest = readAll(*reader);
                 } catch (const provider::ByteStreamFailure&) {
                   return;  // nothing is better than a mixture
                 }
                 EXPECT_TRUE(first + rest == before);
               },
               {Capability::AtomicReplacement}},
              {"ShowsNothingBeforeTheCommit",
               [](Store& s) {
                 s.fill({{u"a", "old"}});
                 const auto replacement = openWith(s.item(u"a"), "new");
                 const auto creation = openWith(s.item(u"b"), "new");
                 EXPECT_EQ(s.content(u"a"), "old");
                 EXPECT_FALSE(s.item(u"b").fileExists());
                 replacement->close(StreamClosePolicy::Commit);
                 creation->close(StreamClosePolicy::Commit);
                 EXPECT_EQ(s.content(u"a"), "new");
                 EXPECT_EQ(s.content(u"b"), "new");
               }},
              {"AbortChangesNothing",
               [](Store& s) {
                 s.fill({{u"a", "old"}});
                 openWith(s.item(u"a"), "new")->close(StreamClosePolicy::Abort);
                 openWith(s.item(u"b"), "new")->close(StreamClosePolicy::Abort);
                 EXPECT_EQ(s.content(u"a"), "old");
                 EXPECT_EQ(s.names(), Names{u"a"});
               }},
              {"DroppingChangesNothing",
               [](Store& s) {
                 s.fill({{u"a", "old"}});
                 openWith(s.item(u"a"), "new").reset();
                 openWith(s.item(u"b"), sample(severalBlocks)).reset();
                 EXPECT_EQ(s.content(u"a"), "old");
                 EXPECT_EQ(s.names(), Names{u"a"});
               }},
              {"UnwindingChangesNothing",
               [](Store& s) {
                 s.fill({{u"a", "old"}});
                 try {
                   const auto stream = openWith(s.item(u"a"), "new");
                   throw std::runtime_error("something else");
                 } catch (const std::runtime_error&) {
                   EXPECT_EQ(s.content(u"a"), "old");
                 }
                 EXPECT_EQ(s.names(), Names{u"a"});
               }},
              {"ClosingAgainDoesNothing",
               [](Store& s) {
                 const auto committed = openWith(s.item(u"a"), "new");
                 committed->close(StreamClosePolicy::Commit);
                 committed->close(StreamClosePolicy::Abort);
                 committed->close(StreamClosePolicy::Commit);
                 EXPECT_EQ(s.content(u"a"), "new");
                 const auto aborted = openWith(s.item(u"b"), "new");
                 aborted->close(StreamClosePolicy::Abort);
                 aborted->close(StreamClosePolicy::Commit);
                 EXPECT_EQ(s.names(), Names{u"a"});
               }},
              {"TheLastCommitWins",
               [](Store& s) {
                 const auto first = openWith(s.item(u"a"), "first");
                 const auto second = openWith(s.item(u"a"), "second");
                 second->close(StreamClosePolicy::Commit);
                 EXPECT_EQ(s.content(u"a"), "second");
                 first->close(StreamClosePolicy::Commit);
                 EXPECT_EQ(s.content(u"a"), "first");
                 EXPECT_EQ(s.names(), Names{u"a"});
               }},
              {"OfSeveralMegabytes",
               [](Store& s) {
                 openWith(s.item(u"a"), sample(severalBlocks))->close(StreamClosePolicy::Commit);
                 EXPECT_TRUE(s.content(u"a") == sample(severalBlocks));
               }},
              {"ReadsOnlyWhereItIsAsked",
               [](Store& s) {
                 const auto stream = openWith(s.item(u"a"), "new");
                 char byte;
                 EXPECT_EQ(stream->read(&byte, 1), -1);
               }},
              {"SeeksAndReadsBack",
               [](Store& s) {
                 auto options = replacing;
                 options.access = ByteStreamAccess::ReadWrite;
                 const auto stream = s.item(u"a").openTransactionalStream(options);
                 writeAll(*stream, "abcdef");
                 EXPECT_EQ(stream->seek(2, std::ios_base::beg), std::streampos(2));
                 char byte = 0;
                 EXPECT_EQ(stream->read(&byte, 1), 1);
                 EXPECT_EQ(byte, 'c');
                 writeAll(*stream, "D");
                 stream->close(StreamClosePolicy::Commit);
                 EXPECT_EQ(s.content(u"a"), "abcDef");
               },
               {Capability::RandomAccess}},
              {"IsRefusedInAMissingFolder",
               [](Store& s) {
                 EXPECT_ANY_THROW(s.item(u"b/a").openTransactionalStream(replacing));
                 EXPECT_EQ(s.names(), Names{});
               }},
              {"NeverReplacesAFolder",
               [](Store& s) {
                 s.fill({{u"a/", ""}, {u"b/x", "x"}});
                 for (const auto* folder : {u"a", u"b"})
                   EXPECT_ANY_THROW(openWith(s.item(folder), "new")->close(StreamClosePolicy::Commit));
                 EXPECT_TRUE(s.item(u"a").folderExists());
                 EXPECT_EQ(s.names(), (Names{u"a", u"b"})) << "the transaction was dropped, and has to clean up";
               }},
              {"CanBeAbortedAfterAFailedCommit",
               [](Store& s) {
                 s.fill({{u"b/", ""}});
                 const auto stream = openWith(s.item(u"b/a"), "new");
                 s.item(u"b/a").createFolder();
                 EXPECT_ANY_THROW(stream->close(StreamClosePolicy::Commit));
                 stream->close(StreamClosePolicy::Abort);
                 EXPECT_EQ(s.names(u"b"), Names{u"a"});
                 EXPECT_TRUE(s.item(u"b/a").folderExists());
               }},
              {"CanBeCommittedAfterAFailedCommit",
               [](Store& s) {
                 const auto stream = openWith(s.item(u"a"), "new");
                 s.item(u"a").createFolder();
                 EXPECT_ANY_THROW(stream->close(StreamClosePolicy::Commit));
                 s.item(u"a").removeFolder();
                 stream->close(StreamClosePolicy::Commit);
                 EXPECT_EQ(s.content(u"a"), "new");
                 EXPECT_EQ(s.names(), Names{u"a"});
               }},
              {"EndsOnceThoughManyThreadsCloseIt",
               [](Store& s) {
                 for (int round = 0; round < 20; ++round) {
                   const auto stream = openWith(s.item(u"a"), "new");
                   together(4, [&](std::size_t) { stream->close(StreamClosePolicy::Commit); });
                   EXPECT_EQ(s.content(u"a"), "new");
                   EXPECT_EQ(s.names(), Names{u"a"});
                 }
               }},
              {"ReadersSeeTheOldOrTheNewContent",
               [](Store& s) {
                 s.fill({{u"a", std::string(100'000, '0')}});
                 together(3, [&](std::size_t number) {
                   for (int round = 1; round <= 40; ++round)
                     if (number == 0) {
                       const std::string bytes(100'000 - 1000 * static_cast<std::size_t>(round),
                                               static_cast<char>('0' + round));
                       openWith(s.item(u"a"), bytes)->close(StreamClosePolicy::Commit);
                     } else {
                       const auto bytes = s.content(u"a");
                       ASSERT_FALSE(bytes.empty());
                       const auto step = static_cast<std::size_t>(bytes[0] - '0');
                       EXPECT_EQ(bytes.size(), 100'000 - 1000 * step);
                       EXPECT_EQ(std::count(bytes.begin(), bytes.end(), bytes[0]),
                                 static_cast<std::ptrdiff_t>(bytes.size()));
                     }
                 });
               },
               {Capability::AtomicReplacement}},
          }};
}

}  // namespace foundation::storage::testing::detail
