#include "support/Thrown.h"
#include <foundation/storage/provider/FolderEntry.h>
#include <foundation/storage/provider/ProviderCacheUsage.h>
#include <foundation/storage/provider/ProviderStorageInfo.h>
#include <foundation/storage/testing/Together.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace foundation::storage::provider {
namespace {

const boost::posix_time::ptime time(boost::gregorian::date(2024, 2, 29), boost::posix_time::seconds(1));

using Flag = std::function<bool()>;

template <class Attributes, class Writable>
Attributes make(Writable writable) {
  if constexpr (std::is_same_v<Attributes, FileAttributes>)
    return {std::nullopt, time, writable};
  else
    return {time, writable};
}

template <class Attributes>
class EntryAttributes : public ::testing::Test {};
using Kinds = ::testing::Types<FileAttributes, FolderAttributes>;
TYPED_TEST_SUITE(EntryAttributes, Kinds, );

TYPED_TEST(EntryAttributes, ShareOneRecordAmongCopies) {
  auto attributes = make<TypeParam>(true);
  EXPECT_TRUE(attributes.isWritable());
  EXPECT_FALSE(attributes.isHidden() || attributes.isSymlink());
  EXPECT_EQ(attributes.getLastModified(), time);
  auto copy = attributes;
  EXPECT_EQ(&copy.withHiddenAttribute(true), &copy);
  EXPECT_EQ(&copy.withSymlinkStatusAttribute(Flag([] { return true; })), &copy);
  EXPECT_TRUE(attributes.isHidden() && attributes.isSymlink());
  copy.withHiddenAttribute(Flag([] { return false; })).withSymlinkStatusAttribute(false);
  EXPECT_FALSE(attributes.isHidden() || attributes.isSymlink());
}

TYPED_TEST(EntryAttributes, AskForAFlagOnceAndOnlyOnDemand) {
  for (int round = 0; round < 20; ++round) {
    std::atomic<int> calls{0};
    std::atomic<int> yes{0};
    const Flag find = [&calls] { return ++calls > 0; };
    auto attributes = make<TypeParam>(find);
    attributes.withHiddenAttribute(find).withSymlinkStatusAttribute(find);
    const auto copy = attributes;
    EXPECT_EQ(calls, 0);
    testing::together(8, [&](std::size_t number) {
      const auto& one = number % 2 == 0 ? attributes : copy;
      yes += one.isWritable() + one.isHidden() + one.isSymlink();
    });
    ASSERT_EQ(calls, 3);
    ASSERT_EQ(yes, 24);
    ASSERT_TRUE(copy.isWritable());
  }
}

TYPED_TEST(EntryAttributes, AskAgainAfterAFailure) {
  int calls = 0;
  const auto attributes = make<TypeParam>(Flag([&calls] {
    if (++calls == 1)
      throw std::runtime_error("no answer");
    return false;
  }));
  EXPECT_EQ(test::textThrownBy<std::runtime_error>([&] { attributes.isWritable(); }), "no answer");
  EXPECT_FALSE(attributes.isWritable() || attributes.isWritable());
  EXPECT_EQ(calls, 2);
}

TEST(FileAttributes, MayHaveASize) {
  EXPECT_FALSE(FileAttributes(std::nullopt, time, true).hasSizeAttribute());
  const FileAttributes big(0x1'4000'0000u, time, false);
  EXPECT_TRUE(big.hasSizeAttribute());
  EXPECT_EQ(big.getSize(), 0x1'4000'0000u);
  EXPECT_TRUE(FileAttributes(0, time, false).hasSizeAttribute());
}

TEST(ExtendedAttributes, AreTypedAndOrdered) {
  EXPECT_EQ(test::textThrownBy<std::out_of_range>([] { ExtendedAttributes().getAttribute<int>("x"); }),
            "Attribute x not found.");
  ExtendedAttributes attributes({{"b", 7}, {"a", std::string("one")}, {"B", 'c'}});
  EXPECT_TRUE(attributes.hasAttribute("b"));
  EXPECT_FALSE(attributes.hasAttribute("A"));
  EXPECT_EQ(attributes.getAttribute<std::string>("a"), "one");
  EXPECT_THROW(attributes.getAttribute<long>("b"), boost::bad_any_cast);
  attributes.begin()->second = 8;
  std::string keys;
  for (const auto& [key, value] : std::as_const(attributes))
    keys += key;
  EXPECT_EQ(keys, "Bab");
  EXPECT_EQ(attributes.getAttribute<int>("B"), 8);
}

TEST(FolderEntry, HoldsTheAttributesOfItsKind) {
  FolderEntry file(u"f", FileAttributes(3, time, true));
  const FolderEntry folder(u"d", FolderAttributes(time, true));
  const FolderEntry name(u"n", FolderEntry::EntryType::File);
  EXPECT_TRUE(file.isFile() && name.isFile() && !folder.isFile());
  EXPECT_EQ(file.getFileAttributes()->getSize(), 3u);
  EXPECT_TRUE(folder.getFolderAttributes() && !folder.getFileAttributes() && !file.getFolderAttributes());
  EXPECT_FALSE(name.getFileAttributes() || name.getFolderAttributes() || name.getExtendedAttributes());
  EXPECT_EQ(&file.withExtendedAttributes(ExtendedAttributes({{"k", 1}})), &file);
  EXPECT_TRUE(FolderEntry(file).getExtendedAttributes()->hasAttribute("k"));
}

TEST(ProviderInfo, IsBoundlessUntilTold) {
  ProviderStorageInfo info;
  EXPECT_EQ(info.getStorageCapacity(), 18446744073709551615u);
  EXPECT_EQ(info.getSpaceOccupied(), 0u);
  EXPECT_EQ(info.withStorageCapacity(9).withSpaceOccupied(4).getStorageCapacity(), 9u);
  EXPECT_EQ(info.getSpaceOccupied(), 4u);
  EXPECT_FALSE(ProviderCacheUsage().getSpaceAvailable());
  EXPECT_EQ(ProviderCacheUsage().withSpaceAvailable(5).getSpaceAvailable(), 5u);
}

}  // namespace
}  // namespace foundation::storage::provider
