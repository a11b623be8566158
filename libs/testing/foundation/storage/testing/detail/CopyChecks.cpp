#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/ByteStream.h>

#include <stdexcept>

namespace foundation::storage::testing::detail {

using provider::CopyFileOptions;
using provider::InterruptSignal;
using provider::TransactionPolicy;
using provider::TransactionStatus;

namespace {

constexpr ReplacementPolicy allPolicies[] = {ReplacementPolicy::Preserve, ReplacementPolicy::Overwrite,
                                             ReplacementPolicy::Clobber, ReplacementPolicy::NoClobber};
constexpr TransactionPolicy bothTransactions[] = {TransactionPolicy::NonAtomic, TransactionPolicy::Atomic};

void copyOver(const StorageItem& from, const StorageItem& to) { from.copyFile(to, ReplacementPolicy::Overwrite); }

/// All four ways to copy a file to another place.
void expectCopies(Store& s, const std::string& bytes) {
  s.fill({{u"from", bytes}});
  for (const auto transaction : bothTransactions)
    for (const bool asks : {false, true}) {
      put(s.item(u"to"), "an old content");
      CopyFileOptions options{ReplacementPolicy::Overwrite, transaction, {}};
      if (asks)
        options.interruptCallback = [] { return InterruptSignal::Continue; };
      EXPECT_EQ(s.item(u"from").copyFile(s.item(u"to"), options), TransactionStatus::Completed);
      EXPECT_TRUE(s.content(u"to") == bytes) << transaction << (asks ? ", asking" : "");
      EXPECT_TRUE(s.content(u"from") == bytes);
      EXPECT_EQ(s.names(), (Names{u"from", u"to"}));
    }
}

}  // namespace

CheckGroup copyChecks() {
  return {"Copy",
          {Capability::Write},
          {
              {"MakesASecondFile",
               [](Store& s) {
                 s.fill({{u"from", "content"}});
                 s.item(u"from").copyFile(s.item(u"to"), ReplacementPolicy::NoClobber);
                 EXPECT_EQ(s.content(u"to"), "content");
                 put(s.item(u"to"), "changed");
                 EXPECT_EQ(s.content(u"from"), "content");
               }},
              {"InEveryWay", [](Store& s) { expectCopies(s, "content"); }},
              {"OfNothingInEveryWay", [](Store& s) { expectCopies(s, ""); }},
              {"OfSeveralMegabytesInEveryWay", [](Store& s) { expectCopies(s, sample(severalBlocks)); }},
              {"WhereNothingIsGoesByNoPolicy",
               [](Store& s) {
                 for (const auto policy : allPolicies) {
                   s.fill({{u"from", "content"}});
                   s.item(u"from").copyFile(s.item(u"to"), policy);
                   EXPECT_EQ(s.content(u"to"), "content");
                 }
               }},
              {"KeepsWhatThePolicyKeeps",
               [](Store& s) {
                 s.fill({{u"from", "content"}, {u"to", "old"}});
                 for (const auto policy : {ReplacementPolicy::Preserve, ReplacementPolicy::NoClobber})
                   for (const auto transaction : bothTransactions)
                     EXPECT_TRUE(refuses(ErrorCode::ResourceAlreadyExists, s.item(u"to"), [&] {
                       s.item(u"from").copyFile(s.item(u"to"), {policy, transaction, {}});
                     }));
                 EXPECT_EQ(s.content(u"to"), "old");
               }},
              {"ReplacesALongerFile",
               [](Store& s) {
                 s.fill({{u"from", "short"}, {u"to", "a much longer old content"}});
                 for (const auto policy : {ReplacementPolicy::Overwrite, ReplacementPolicy::Clobber}) {
                   s.item(u"from").copyFile(s.item(u"to"), policy);
                   EXPECT_EQ(s.content(u"to"), "short");
                 }
               }},
              {"IntoAnotherFolder",
               [](Store& s) {
                 s.fill({{u"from", "content"}, {u"b/", ""}});
                 copyOver(s.item(u"from"), s.item(u"b/from"));
                 EXPECT_EQ(s.content(u"b/from"), "content");
               }},
              {"ToAnotherStore",
               [](Store& s) {
                 const auto other = s.other();
                 const StorageItem to(*other, u"to");
                 s.fill({{u"from", sample(severalBlocks)}});
                 for (const auto transaction : bothTransactions) {
                   EXPECT_EQ(s.item(u"from").copyFile(to, {ReplacementPolicy::Overwrite, transaction, {}}),
                             TransactionStatus::Completed);
                   EXPECT_TRUE(contentOf(to) == sample(severalBlocks));
                 }
                 EXPECT_TRUE(refuses(ErrorCode::ResourceAlreadyExists, to,
                                     [&] { s.item(u"from").copyFile(to, ReplacementPolicy::NoClobber); }));
               }},
              {"OfAMissingFileIsRefused",
               [](Store& s) {
                 s.fill({{u"to", "old"}});
                 EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"from"),
                                     [&] { copyOver(s.item(u"from"), s.item(u"to")); }));
                 EXPECT_EQ(s.content(u"to"), "old");
               }},
              {"OfAFolderIsRefused",
               [](Store& s) {
                 s.fill({{u"from/x", "x"}, {u"to", "old"}});
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"from"),
                                     [&] { copyOver(s.item(u"from"), s.item(u"to")); }));
                 EXPECT_EQ(s.content(u"to"), "old");
               }},
              {"OntoAFolderIsRefused",
               [](Store& s) {
                 s.fill({{u"from", "content"}, {u"to/x", "x"}});
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"to"),
                                     [&] { copyOver(s.item(u"from"), s.item(u"to")); }));
                 EXPECT_EQ(s.content(u"to/x"), "x");
               }},
              {"IntoAMissingFolderIsRefused",
               [](Store& s) {
                 s.fill({{u"from", "content"}});
                 EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"b/to"),
                                     [&] { copyOver(s.item(u"from"), s.item(u"b/to")); }));
                 EXPECT_EQ(s.names(), Names{u"from"});
               }},
              {"OntoItselfIsRefused",
               [](Store& s) {
                 s.fill({{u"from", "content"}});
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"from"),
                                     [&] { copyOver(s.item(u"from"), s.item(u"from")); }));
                 EXPECT_EQ(s.content(u"from"), "content");
               }},
              {"OntoItselfByAnotherTextIsRefused",
               [](Store& s) {
                 s.fill({{u"from", "content"}, {u"b/", ""}});
                 EXPECT_ANY_THROW(copyOver(s.item(u"from"), s.item(u"b/../from")));
                 EXPECT_EQ(s.content(u"from"), "content");
               }},
              {"OntoItselfByStreamsIsRefused",
               [](Store& s) {
                 s.fill({{u"from", sample(severalBlocks)}});
                 const CopyFileOptions asking{ReplacementPolicy::Overwrite, TransactionPolicy::NonAtomic,
                                              [] { return InterruptSignal::Continue; }};
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, s.item(u"from"),
                                     [&] { s.item(u"from").copyFile(s.item(u"from"), asking); }));
                 EXPECT_TRUE(s.content(u"from") == sample(severalBlocks));
               }},
              {"StoppedLeavesWhatWasWritten",
               [](Store& s) {
                 s.fill({{u"from", sample(severalBlocks)}});
                 const CopyFileOptions options{ReplacementPolicy::Overwrite, TransactionPolicy::NonAtomic,
                                               [] { return InterruptSignal::Abort; }};
                 EXPECT_EQ(s.item(u"from").copyFile(s.item(u"to"), options), TransactionStatus::Aborted);
                 const auto left = s.content(u"to");
                 EXPECT_LT(left.size(), severalBlocks);
                 EXPECT_GT(left.size(), 0u);
                 EXPECT_TRUE(sample(severalBlocks).starts_with(left));
               }},
              {"StoppedLeavesNothingWhereItIsAtomic",
               [](Store& s) {
                 s.fill({{u"from", sample(severalBlocks)}, {u"to", "old"}});
                 int asked = 0;
                 const CopyFileOptions options{
                     ReplacementPolicy::Overwrite, TransactionPolicy::Atomic,
                     [&] { return ++asked == 2 ? InterruptSignal::Abort : InterruptSignal::Continue; }};
                 EXPECT_EQ(s.item(u"from").copyFile(s.item(u"to"), options), TransactionStatus::Aborted);
                 EXPECT_EQ(s.content(u"to"), "old");
                 EXPECT_EQ(s.names(), (Names{u"from", u"to"}));
                 EXPECT_EQ(asked, 2);
               }},
              {"AsksAboutEveryBlock",
               [](Store& s) {
                 s.fill({{u"from", sample(severalBlocks)}});
                 for (const auto transaction : bothTransactions) {
                   int asked = 0;
                   s.item(u"from").copyFile(s.item(u"to"), {ReplacementPolicy::Overwrite, transaction, [&] {
                                                              ++asked;
                                                              return InterruptSignal::Continue;
                                                            }});
                   EXPECT_EQ(asked, 3) << "blocks are 4 MiB";
                 }
               }},
              {"WhoseCallbackThrowsLeavesNothingWhereItIsAtomic",
               [](Store& s) {
                 s.fill({{u"from", sample(severalBlocks)}, {u"to", "old"}});
                 const CopyFileOptions options{ReplacementPolicy::Overwrite, TransactionPolicy::Atomic,
                                               []() -> InterruptSignal { throw std::runtime_error("no more"); }};
                 EXPECT_THROW(s.item(u"from").copyFile(s.item(u"to"), options), std::runtime_error);
                 EXPECT_EQ(s.content(u"to"), "old");
                 EXPECT_EQ(s.names(), (Names{u"from", u"to"}));
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
