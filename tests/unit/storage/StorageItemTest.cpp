#include "support/MemoryProvider.h"
#include "support/RecordingProvider.h"
#include <foundation/storage/provider/InvalidateProvider.h>
#include <foundation/storage/provider/StorageItem.h>

#include <boost/property_tree/ptree.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <utility>

namespace foundation::storage::provider {
namespace {

using test::MemoryProvider;
using test::RecordingProvider;
using Log = std::vector<std::string>;

TEST(StorageItem, IsAProviderAndALocation) {
  const auto provider = std::make_shared<MemoryProvider>();
  const StorageItem folder(provider, StorageIRI(u"s:///d/"));
  const StorageItem item(folder, u"100%");
  EXPECT_EQ(item.getLocation().toString(), u"s:///d/100%25");
  EXPECT_EQ(item.getName(), u"100%");
  EXPECT_EQ(item.getScheme(), u"s");
  EXPECT_TRUE(item.hasParent());
  EXPECT_EQ(item.getParent(), folder);
  EXPECT_EQ(StorageItem(item, StorageIRI(u"s:/d/")), folder);
  EXPECT_NE(item, folder);
  EXPECT_NE(StorageItem(std::make_shared<MemoryProvider>(), folder.getLocation()), folder);
  EXPECT_EQ(provider.use_count(), 3);
}

TEST(StorageItem, ReachesOptionalCapabilities) {
  boost::property_tree::ptree tree;
  tree.put("key", "value");
  const auto able = std::make_shared<RecordingProvider>();
  for (const std::shared_ptr<IProvider>& provider :
       {std::shared_ptr<IProvider>(able), {std::make_shared<MemoryProvider>()}}) {
    const StorageItem item(provider, StorageIRI(u"s:///a"));
    item.configure(tree);
    item.flushFilesystem();
    invalidateProvider(item);
    EXPECT_EQ(item.hasFeature(ExtendedFeature::RecursiveFolderRemoval), provider == able);
    item.shutdownProvider();
  }
  EXPECT_EQ(able->take(),
            "Configure value, FlushFilesystem, Invalidate s:///a, HasFeature ExtendedFeature::RecursiveFolderRemoval, "
            "Shutdown");
}

/// Two stores that write one log, and a file in the first.
class CopyFile : public testing::Test {
 protected:
  CopyFile() { from_->put(u"/a", content_); }

  TransactionStatus copy(ReplacementPolicy policy, std::function<InterruptSignal()> callback) const {
    return source_.copyFile(destination_, {policy, TransactionPolicy::NonAtomic, std::move(callback)});
  }
  /// A callback that answers `Abort` on the call of that number, counted from 1.
  std::function<InterruptSignal()> abortAt(int number) const {
    return [this, number, calls = 0]() mutable {
      script_->add("asked");
      return ++calls == number ? InterruptSignal::Abort : InterruptSignal::Continue;
    };
  }

  static constexpr std::size_t block_ = 4u << 20;
  const std::string content_ = std::string(block_, 'x') + "end";
  const std::shared_ptr<test::Script> script_ = std::make_shared<test::Script>();
  const std::shared_ptr<MemoryProvider> from_ = std::make_shared<MemoryProvider>(script_);
  const std::shared_ptr<MemoryProvider> to_ = std::make_shared<MemoryProvider>(script_);
  const StorageItem source_{from_, StorageIRI(u"s:///a")};
  const StorageItem destination_{to_, StorageIRI(u"t:///b")};
};

TEST_F(CopyFile, GoesThroughStreamsBetweenStores) {
  source_.copyFile(destination_, ReplacementPolicy::Preserve);
  EXPECT_TRUE(*to_->contentOf(u"/b") == content_);
  EXPECT_EQ(script_->take(),
            (Log{"fileExists /b", "openReadOnly /a", "/a read 4194304", "open /b 1001", "/b write 4194304",
                 "/a read 4194304", "/b write 3", "/a read 4194304", "/b close", "/b gone", "/a gone"}));
}

TEST_F(CopyFile, AsksAfterEachBlock) {
  script_->mostPerWrite = 3'000'000;
  EXPECT_EQ(copy(ReplacementPolicy::Overwrite, abortAt(9)), TransactionStatus::Completed);
  EXPECT_EQ(script_->take(), (Log{"fileExists /b", "openReadOnly /a", "/a read 4194304", "open /b 1001",
                                  "/b write 4194304", "/b write 1194304", "asked", "/a read 4194304", "/b write 3",
                                  "asked", "/a read 4194304", "/b close", "/b gone", "/a gone"}));
  EXPECT_EQ(copy(ReplacementPolicy::Overwrite, abortAt(1)), TransactionStatus::Aborted);
  EXPECT_EQ(to_->contentOf(u"/b")->size(), block_);
  const auto log = script_->take();
  EXPECT_EQ(Log(log.end() - 4, log.end()), (Log{"asked", "/b close", "/b gone", "/a gone"}));
}

/// The scratch file's name is random.
Log withoutScratchName(const Log& log) {
  static const std::regex scratch(R"(/\.[0-9a-f-]{36}\.tmp\.bak)");
  Log named;
  for (const auto& line : log)
    named.push_back(std::regex_replace(line, scratch, "/scratch"));
  return named;
}

TEST_F(CopyFile, PublishesAnAtomicCopyAtItsEnd) {
  const auto copyAtomically = [&](std::function<InterruptSignal()> callback) {
    const auto status =
        source_.copyFile(destination_, {ReplacementPolicy::Overwrite, TransactionPolicy::Atomic, std::move(callback)});
    return std::pair(status, withoutScratchName(script_->take()));
  };
  const Log first{"fileExists /b", "openReadOnly /a", "/a read 4194304", "open /scratch 1001",
                  "/scratch write 4194304"};
  const auto expected = [&](const Log& rest) {
    auto all = first;
    all.insert(all.end(), rest.begin(), rest.end());
    return all;
  };
  EXPECT_EQ(
      copyAtomically(nullptr),
      std::pair(TransactionStatus::Completed, expected({"/a read 4194304", "/scratch write 3", "/a read 4194304",
                                                        "/scratch close", "moveOver /b", "/scratch gone", "/a gone"})));
  EXPECT_EQ(copyAtomically(abortAt(9)),
            std::pair(TransactionStatus::Completed,
                      expected({"asked", "/a read 4194304", "/scratch write 3", "asked", "/a read 4194304",
                                "/scratch close", "moveOver /b", "/scratch gone", "/a gone"})));
  EXPECT_TRUE(*to_->contentOf(u"/b") == content_);
  to_->put(u"/b", "old");
  EXPECT_EQ(copyAtomically(abortAt(1)),
            std::pair(TransactionStatus::Aborted, expected({"asked", "/scratch close", "/scratch gone", "/a gone"})));
  EXPECT_EQ(*to_->contentOf(u"/b"), "old");
  EXPECT_EQ(to_->countFiles(), 1u);
}

TEST_F(CopyFile, GoesThroughStreamsWithinAStoreWhereTheCallerAsks) {
  const StorageItem sibling(source_, u"/b");
  EXPECT_EQ(source_.copyFile(sibling, {ReplacementPolicy::Overwrite, TransactionPolicy::NonAtomic, abortAt(0)}),
            TransactionStatus::Completed);
  EXPECT_TRUE(*from_->contentOf(u"/b") == content_);
  const auto log = script_->take();
  EXPECT_EQ(std::count(log.begin(), log.end(), "asked"), 2);
}

TEST_F(CopyFile, LeavesOneStoreToItsProvider) {
  const auto provider = std::make_shared<RecordingProvider>();
  const StorageItem source(provider, StorageIRI(u"s:///a"));
  const StorageItem destination(source, u"/b");
  source.copyFile(destination, ReplacementPolicy::Clobber);
  EXPECT_EQ(provider->take(), "FileExists s:///b, CopyFile s:///a s:///b ReplacementPolicy::Clobber");
  EXPECT_EQ(source.copyFile(destination, {ReplacementPolicy::Overwrite, TransactionPolicy::Atomic, abortAt(0)}),
            TransactionStatus::Aborted);
  EXPECT_EQ(provider->take(),
            "FileExists s:///b, HasFeature , CopyFileAtomic s:///a s:///b ReplacementPolicy::Overwrite callback");
}

TEST_F(CopyFile, CreatesAnEmptyDestination) {
  from_->put(u"/a", "");
  to_->put(u"/b", "old");
  EXPECT_EQ(copy(ReplacementPolicy::Overwrite, abortAt(1)), TransactionStatus::Completed);
  EXPECT_EQ(*to_->contentOf(u"/b"), "");
  const auto log = script_->take();
  EXPECT_EQ(std::count(log.begin(), log.end(), "asked"), 0);
  EXPECT_EQ(std::count(log.begin(), log.end(), "/b close"), 1);
}

TEST_F(CopyFile, KeepsAnExistingDestination) {
  to_->put(u"/b", "old");
  from_->put(u"/b", "old");
  for (const auto& destination : {destination_, StorageItem(source_, u"/b")})
    for (const auto policy : {ReplacementPolicy::Preserve, ReplacementPolicy::NoClobber})
      for (const auto transaction : {TransactionPolicy::NonAtomic, TransactionPolicy::Atomic}) {
        try {
          source_.copyFile(destination, {policy, transaction});
          ADD_FAILURE() << "was copied";
        } catch (const Exception& failure) {
          EXPECT_EQ(failure.getErrorCode(), ErrorCode::ResourceAlreadyExists);
          EXPECT_EQ(failure.getStorageIRI(), destination.getLocation());
        }
        EXPECT_EQ(script_->take(), Log{"fileExists /b"});
      }
  EXPECT_EQ(*to_->contentOf(u"/b"), "old");
}

TEST_F(CopyFile, ReportsFailures) {
  to_->put(u"/b", "old");
  script_->failing = "/a read 4194304";
  EXPECT_THROW(copy(ReplacementPolicy::Overwrite, nullptr), ByteStreamReadFailure);
  EXPECT_EQ(*to_->contentOf(u"/b"), "old") << "opened before the source was read";
  script_->failing = "/b write 4194304";
  EXPECT_THROW(copy(ReplacementPolicy::Overwrite, nullptr), ByteStreamWriteFailure);
  script_->failing = "/b close";
  try {
    copy(ReplacementPolicy::Overwrite, nullptr);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const Exception& failure) {
    EXPECT_EQ(failure.getErrorCode(), ErrorCode::NoSpaceLeft);
    EXPECT_EQ(failure.getStorageIRI(), destination_.getLocation());
  }
  EXPECT_THROW(StorageItem(source_, u"/none").copyFile(destination_, ReplacementPolicy::Overwrite), Exception);
}

}  // namespace
}  // namespace foundation::storage::provider
