// How much fits in, and what it takes.

#include "Store.h"

#include <foundation/storage/backend/support/InvalidOptionException.h>

#include <limits>

namespace foundation::storage::backend::memory {
namespace {

constexpr auto maximum = std::numeric_limits<std::int64_t>::max();
constexpr ByteStreamOpenOptions inPlace{.access = ByteStreamAccess::ReadWrite,
                                        .truncate = ByteStreamTruncate::PreserveExisting,
                                        .append = ByteStreamAppend::Overwrite};

class SpaceTest : public StoreTest {};

TEST_F(SpaceTest, TakesWhatFitsAndThenNothing) {
  limitTo(10);
  put(u"a", "1234567");
  const auto file = child(u"b");
  const auto stream = file.openStream(inPlace);
  EXPECT_EQ(stream->write("abcdef", 6), 3);
  EXPECT_EQ(codeThrownAt(file, [&] { stream->write("def", 3); }), ErrorCode::NoSpaceLeft);
  EXPECT_EQ(stream->seek(1, std::ios_base::beg), std::streampos(1));
  EXPECT_EQ(stream->write("BCD", 3), 2);  // what is there already takes no more space
  EXPECT_EQ(stream->seek(5, std::ios_base::beg), std::streampos(5));
  EXPECT_EQ(codeThrownAt(file, [&] { stream->write("x", 1); }), ErrorCode::NoSpaceLeft);
  EXPECT_EQ(codeThrownAt(file, [&] { file.truncateToSize(4); }), ErrorCode::NoSpaceLeft);
  EXPECT_EQ(content(u"a") + content(u"b"), "1234567aBC");
  child(u"a").truncateToSize(1);
  EXPECT_EQ(stream->write("x", 1), 1);  // with a gap of two
  EXPECT_EQ(content(u"b"), std::string("aBC\0\0x", 6));
  EXPECT_EQ(occupied(), 7u);
}

TEST_F(SpaceTest, CountsRemovedAndReplacedFilesWhileTheyAreOpen) {
  put(u"a", "12345");
  put(u"b", "123");
  const auto removed = child(u"a").openReadOnlyStream();
  const auto replaced = child(u"b").openStream(inPlace);
  child(u"a").removeFile();
  put(u"c", "1");
  child(u"c").moveFile(child(u"b").getLocation(), ReplacementPolicy::Overwrite);
  EXPECT_EQ(occupied(), 9u);
  char bytes[5];
  EXPECT_EQ(removed->read(bytes, 5), 5);
  EXPECT_EQ(std::string(bytes, 5), "12345");
  removed->close();
  EXPECT_EQ(occupied(), 4u);
  replaced->close();
  EXPECT_EQ(occupied(), 1u);
}

TEST_F(SpaceTest, GivesBackWhatAnUnfinishedCopyTook) {
  constexpr std::uint64_t step = 4 * 1024 * 1024;
  child(u"a").openStream(inPlace)->close();
  child(u"a").truncateToSize(2 * step + 1);
  put(u"b", "before");
  const auto before = occupied();
  std::uint64_t asked = 0;
  const CopyFileOptions options{.replacementPolicy = ReplacementPolicy::Overwrite,
                                .transactionPolicy = TransactionPolicy::Atomic,
                                .interruptCallback = [&] {
                                  EXPECT_EQ(occupied(), before + std::min(++asked * step, 2 * step + 1));
                                  EXPECT_EQ(content(u"b"), "before");
                                  return asked == 3 ? InterruptSignal::Abort : InterruptSignal::Continue;
                                }};
  EXPECT_EQ(child(u"a").copyFile(child(u"b"), options), TransactionStatus::Aborted);
  EXPECT_EQ(asked, 3u);
  EXPECT_EQ(occupied(), before);
  limitTo(before + 2 * step);
  EXPECT_EQ(codeThrownAt(child(u"b"), [&] { child(u"a").copyFile(child(u"b"), ReplacementPolicy::Overwrite); }),
            ErrorCode::NoSpaceLeft);
  EXPECT_EQ(content(u"b"), "before");
  EXPECT_EQ(occupied(), before);
}

TEST_F(SpaceTest, IsConfiguredWholeOrNotAtAll) {
  EXPECT_EQ(root.getProviderStorageInfo().getStorageCapacity(), std::numeric_limits<std::uint64_t>::max());
  put(u"a", "12345");
  limitTo(3);
  EXPECT_EQ(root.getProviderStorageInfo().getStorageCapacity(), 3u);
  EXPECT_EQ(codeThrownAt(child(u"a"), [&] { child(u"a").truncateToSize(6); }), ErrorCode::NoSpaceLeft);
  child(u"a").truncateToSize(2);
  put(u"b", "1");
  boost::property_tree::ptree options;
  options.put("capacity", 100);
  options.put("capacty", 100);
  EXPECT_THROW(root.configure(options), support::InvalidOptionException);
  EXPECT_EQ(root.getProviderStorageInfo().getStorageCapacity(), 3u);
}

TEST_F(SpaceTest, KeepsLargeFilesSparse) {
  constexpr std::int64_t far = 5LL * 1024 * 1024 * 1024;
  const auto file = child(u"big");
  const auto stream = file.openStream(inPlace);
  stream->seek(far, std::ios_base::beg);
  EXPECT_EQ(stream->write("end", 3), 3);
  EXPECT_EQ(occupied(), static_cast<std::uint64_t>(far) + 3);
  file.copyFile(child(u"copy"), ReplacementPolicy::Preserve);
  char bytes[6];
  const auto copy = child(u"copy").openReadOnlyStream();
  copy->seek(far - 2, std::ios_base::beg);
  EXPECT_EQ(copy->read(bytes, 6), 5);
  EXPECT_EQ(std::string(bytes, 5), std::string("\0\0end", 5));
  EXPECT_EQ(copy->read(bytes, 6), -1);
}

TEST_F(SpaceTest, ReachesAsFarAsPositionsDo) {
  const auto file = child(u"file");
  const auto stream = file.openStream(inPlace);
  EXPECT_EQ(stream->seek(maximum - 1, std::ios_base::beg), std::streampos(maximum - 1));
  EXPECT_EQ(stream->write("xy", 2), 1);
  EXPECT_EQ(codeThrownAt(file, [&] { stream->write("y", 1); }), ErrorCode::FileTooLarge);
  EXPECT_EQ(codeThrownAt(file, [&] { stream->seek(1, std::ios_base::end); }), ErrorCode::FileTooLarge);
  EXPECT_EQ(codeThrownAt(file, [&] { stream->seek(-maximum - 1, std::ios_base::end); }), ErrorCode::IOError);
  EXPECT_EQ(stream->seek(0, std::ios_base::cur), std::streampos(maximum));
  EXPECT_EQ(codeThrownAt(file, [&] { file.truncateToSize(std::uint64_t{1} << 63); }), ErrorCode::FileTooLarge);
  EXPECT_EQ(file.getFileAttributes().getSize(), static_cast<std::uint64_t>(maximum));
  file.copyFile(child(u"second"), ReplacementPolicy::Preserve);
  child(u"third").createFile();
  EXPECT_EQ(codeThrownAt(child(u"third"), [&] { child(u"third").truncateToSize(maximum); }), ErrorCode::NoSpaceLeft);
}

}  // namespace
}  // namespace foundation::storage::backend::memory
