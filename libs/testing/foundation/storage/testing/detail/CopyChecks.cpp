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

void copyOver(const StorageItem& from, const StorageItem& to, TransactionPolicy transaction) {
  from.copyFile(to, {ReplacementPolicy::Overwrite, transaction, {}});
}

/// Both ways to copy are refused alike.
::testing::AssertionResult refusesCopy(ErrorCode code, const StorageItem& at, const StorageItem& from,
                                       const StorageItem& to) {
  auto result = ::testing::AssertionSuccess();
  for (const auto transaction : bothTransactions)
    if (result)
      result = refusesStream(code, at, [&] { copyOver(from, to, transaction); });
  return result;
}

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
  return {
      "Copy",
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
                 EXPECT_TRUE(refusesStream(ErrorCode::ResourceAlreadyExists, s.item(u"to"), [&] {
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
             copyOver(s.item(u"from"), s.item(u"b/from"), TransactionPolicy::NonAtomic);
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
             EXPECT_TRUE(refusesStream(ErrorCode::ResourceAlreadyExists, to,
                                       [&] { s.item(u"from").copyFile(to, ReplacementPolicy::NoClobber); }));
           }},
          {"ToTheSameNameInAnotherStore",
           [](Store& s) {
             const auto other = s.other();
             const StorageItem to(*other, u"same");
             s.fill({{u"same", "content"}});
             put(to, "old");
             s.item(u"same").copyFile(to, ReplacementPolicy::Overwrite);
             EXPECT_EQ(contentOf(to), "content");
             EXPECT_EQ(s.content(u"same"), "content");
           }},
          {"OfAMissingFileIsRefused",
           [](Store& s) {
             s.fill({{u"to", "old"}});
             EXPECT_TRUE(refusesCopy(ErrorCode::ResourceNotFound, s.item(u"from"), s.item(u"from"), s.item(u"to")));
             EXPECT_EQ(s.content(u"to"), "old");
           }},
          {"OfAFolderIsRefused",
           [](Store& s) {
             s.fill({{u"from/x", "x"}, {u"to", "old"}});
             EXPECT_TRUE(refusesCopy(ErrorCode::InvalidLocation, s.item(u"from"), s.item(u"from"), s.item(u"to")));
             EXPECT_EQ(s.content(u"to"), "old");
           }},
          {"OntoAFolderIsRefused",
           [](Store& s) {
             s.fill({{u"from", "content"}, {u"to/x", "x"}});
             EXPECT_TRUE(refusesCopy(ErrorCode::InvalidLocation, s.item(u"to"), s.item(u"from"), s.item(u"to")));
             EXPECT_EQ(s.content(u"to/x"), "x");
           }},
          {"IntoAMissingFolderIsRefused",
           [](Store& s) {
             s.fill({{u"from", "content"}});
             EXPECT_TRUE(refusesStream(ErrorCode::ResourceNotFound, s.item(u"b/to"), [&] {
               copyOver(s.item(u"from"), s.item(u"b/to"), TransactionPolicy::NonAtomic);
             }));
             // A transaction may name its scratch file.
             EXPECT_ANY_THROW(copyOver(s.item(u"from"), s.item(u"b/to"), TransactionPolicy::Atomic));
             EXPECT_EQ(s.names(), Names{u"from"});
           }},
          {"OntoItselfIsRefused",
           [](Store& s) {
             s.fill({{u"from", "content"}});
             EXPECT_TRUE(refusesCopy(ErrorCode::InvalidLocation, s.item(u"from"), s.item(u"from"), s.item(u"from")));
             EXPECT_EQ(s.content(u"from"), "content");
           }},
          {"OntoItselfByAnotherTextIsRefused",
           [](Store& s) {
             s.fill({{u"from", "content"}, {u"b/", ""}});
             for (const auto transaction : bothTransactions)
               EXPECT_ANY_THROW(copyOver(s.item(u"from"), s.item(u"b/../from"), transaction));
             EXPECT_EQ(s.content(u"from"), "content");
           }},
          {"OntoItselfByStreamsIsRefused",
           [](Store& s) {
             s.fill({{u"from", sample(severalBlocks)}});
             const CopyFileOptions asking{ReplacementPolicy::Overwrite, TransactionPolicy::NonAtomic,
                                          [] { return InterruptSignal::Continue; }};
             EXPECT_TRUE(refusesStream(ErrorCode::InvalidLocation, s.item(u"from"),
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
             const CopyFileOptions options{ReplacementPolicy::Overwrite, TransactionPolicy::Atomic, [&] {
                                             return ++asked == 2 ? InterruptSignal::Abort : InterruptSignal::Continue;
                                           }};
             EXPECT_EQ(s.item(u"from").copyFile(s.item(u"to"), options), TransactionStatus::Aborted);
             EXPECT_EQ(s.content(u"to"), "old");
             EXPECT_EQ(s.names(), (Names{u"from", u"to"}));
           }},
          {"AsksWhetherToGoOn",
           [](Store& s) {
             s.fill({{u"from", sample(severalBlocks)}});
             for (const auto transaction : bothTransactions) {
               int asked = 0;
               s.item(u"from").copyFile(s.item(u"to"), {ReplacementPolicy::Overwrite, transaction, [&] {
                                                          ++asked;
                                                          return InterruptSignal::Continue;
                                                        }});
               EXPECT_GE(asked, 1) << transaction;
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
