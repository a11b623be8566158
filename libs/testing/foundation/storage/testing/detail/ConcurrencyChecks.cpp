#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/testing/Together.h>

#include <algorithm>
#include <atomic>

namespace foundation::storage::testing::detail {
namespace {

constexpr std::size_t threads = 4;

std::u16string numbered(std::size_t number) { return u"f" + std::u16string(1, static_cast<char16_t>(u'0' + number)); }

/// How many of several threads succeed at the same thing at once; the others must fail with `expected`.
int countWinners(ErrorCode expected, const std::function<void()>& action) {
  std::atomic<int> winners = 0;
  together(threads, [&](std::size_t) {
    try {
      action();
      ++winners;
    } catch (const provider::Exception& failure) {
      EXPECT_EQ(failure.getErrorCode(), expected) << failure.what();
    }
  });
  return winners;
}

}  // namespace

CheckGroup concurrencyChecks() {
  return {"Concurrency",
          {},
          {
              {"ManyReadOneFile",
               [](Store& s) {
                 s.fill({{u"a", sample(100'000)}});
                 together(threads, [&](std::size_t) { EXPECT_TRUE(s.content(u"a") == sample(100'000)); });
               }},
              {"ManyListOneFolder",
               [](Store& s) {
                 s.fill({{u"a", "1"}, {u"b/", ""}, {u"c", "3"}});
                 together(threads, [&](std::size_t) {
                   for (int round = 0; round < 20; ++round)
                     EXPECT_EQ(s.names(), (Names{u"a", u"b", u"c"}));
                 });
               }},
              {"ManyWriteFilesOfTheirOwn",
               [](Store& s) {
                 together(threads, [&](std::size_t number) {
                   for (std::size_t round = 1; round <= 20; ++round)
                     put(s.item(numbered(number)), std::string(round * 1000, static_cast<char>('a' + number)));
                 });
                 for (std::size_t number = 0; number < threads; ++number)
                   EXPECT_EQ(s.content(numbered(number)), std::string(20'000, static_cast<char>('a' + number)));
               },
               {Capability::Write}},
              {"OneCreatesTheFile",
               [](Store& s) {
                 for (int round = 0; round < 20; ++round) {
                   EXPECT_EQ(countWinners(ErrorCode::ResourceAlreadyExists, [&] { s.item(u"a").createFile(); }), 1);
                   s.item(u"a").removeFile();
                 }
               },
               {Capability::Write, Capability::ExclusiveCreation}},
              {"OneCreatesTheFolder",
               [](Store& s) {
                 for (int round = 0; round < 20; ++round) {
                   EXPECT_EQ(countWinners(ErrorCode::ResourceAlreadyExists, [&] { s.item(u"a").createFolder(); }), 1);
                   s.item(u"a").removeFolder();
                 }
               },
               {Capability::Write, Capability::ExclusiveCreation}},
              {"AllCreateFoldersBelowTheSameMissingOnes",
               [](Store& s) {
                 together(threads,
                          [&](std::size_t number) { s.item(u"x/y/z/" + numbered(number)).createFolderRecursive(); });
                 EXPECT_EQ(s.names(u"x/y/z").size(), threads);
               },
               {Capability::Write}},
              {"OneMovesTheFile",
               [](Store& s) {
                 for (int round = 0; round < 20; ++round) {
                   put(s.item(u"a"), "content");
                   std::atomic<std::size_t> next = 0;
                   EXPECT_EQ(countWinners(ErrorCode::ResourceNotFound,
                                          [&] {
                                            s.item(u"a").moveFile(s.item(numbered(next++)).getLocation(),
                                                                  ReplacementPolicy::Overwrite);
                                          }),
                             1);
                   ASSERT_EQ(s.names().size(), 1u);
                   s.item(s.names().front()).removeFile();
                 }
               },
               {Capability::Write, Capability::ExclusiveCreation}},
              {"OneMoveKeepsTheOthersFromItsDestination",
               [](Store& s) {
                 for (int round = 0; round < 20; ++round) {
                   for (std::size_t number = 0; number < threads; ++number)
                     put(s.item(numbered(number)), numbered(number) == u"f0" ? "0" : "other");
                   std::atomic<std::size_t> next = 0;
                   EXPECT_EQ(countWinners(ErrorCode::ResourceAlreadyExists,
                                          [&] {
                                            s.item(numbered(next++))
                                                .moveFile(s.item(u"to").getLocation(), ReplacementPolicy::NoClobber);
                                          }),
                             1);
                   EXPECT_EQ(s.names().size(), threads);
                   s.item(u"to").removeFile();
                 }
               },
               {Capability::Write, Capability::ExclusiveCreation}},
              {"OneRemovesTheFile",
               [](Store& s) {
                 for (int round = 0; round < 20; ++round) {
                   put(s.item(u"a"), "content");
                   EXPECT_EQ(countWinners(ErrorCode::ResourceNotFound, [&] { s.item(u"a").removeFile(); }), 1);
                 }
               },
               {Capability::Write, Capability::ExclusiveCreation}},
              {"ListingWhileEntriesComeAndGo",
               [](Store& s) {
                 s.fill({{u"stays", "x"}});
                 together(threads, [&](std::size_t number) {
                   for (int round = 0; round < 30; ++round)
                     if (number == 0) {
                       const auto names = s.names();
                       EXPECT_EQ(std::count(names.begin(), names.end(), u"stays"), 1);
                     } else {
                       put(s.item(numbered(number)), "x");
                       s.item(numbered(number)).removeFile();
                     }
                 });
                 EXPECT_EQ(s.names(), Names{u"stays"});
               },
               {Capability::Write}},
              {"OneStreamsWritesAreSeenByTheNextReader",
               [](Store& s) {
                 s.fill({{u"a", ""}});
                 for (int round = 0; round < 20; ++round) {
                   const auto bytes = std::to_string(round);
                   together(1, [&](std::size_t) { put(s.item(u"a"), bytes); });
                   EXPECT_EQ(s.content(u"a"), bytes);
                 }
               },
               {Capability::Write}},
              {"AFailureCrossesThreads",
               [](Store& s) {
                 EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"),
                                     [&] { together(1, [&](std::size_t) { s.item(u"a").getFileAttributes(); }); }));
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
