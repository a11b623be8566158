// Copies: holes, modes, and those that are asked to stop.

#include "TemporaryFolder.h"

#include <foundation/storage/provider/ScratchFiles.h>

#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t mebibyte = 1 << 20;

class CopyTest : public LocalTest {
 protected:
  struct stat statusOf(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(stat(native(name).c_str(), &status), 0);
    return status;
  }

  void putAt(const std::string& name, std::int64_t offset, const std::string& bytes) const {
    std::fstream file(native(name), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(offset);
    file << bytes;
  }
  std::string bytesAt(const std::string& name, std::int64_t offset, std::size_t count) const {
    std::ifstream file(native(name), std::ios::binary);
    file.seekg(offset);
    std::string bytes(count, '?');
    file.read(bytes.data(), static_cast<std::streamsize>(count));
    return bytes;
  }

  TransactionStatus copy(const std::u16string& from, const std::u16string& to, InterruptCallback goOn = {}) const {
    return child(from).copyFile(child(to), {ReplacementPolicy::Overwrite, TransactionPolicy::Atomic, std::move(goOn)});
  }
};

TEST_F(CopyTest, KeepsHoles) {
  const std::int64_t size = 5 * 1024 * mebibyte;
  const struct {
    const char* what;
    std::vector<std::int64_t> data;
  } layouts[] = {{"nothing but a hole", {}},
                 {"data at the beginning", {0}},
                 {"data at the end", {size - 3}},
                 {"data in the middle", {17 * mebibyte, 4 * 1024 * mebibyte}}};
  for (const auto& layout : layouts) {
    SCOPED_TRACE(layout.what);
    put("sparse", "");
    fs::resize_file(native("sparse"), static_cast<std::uintmax_t>(size));
    for (const auto offset : layout.data)
      putAt("sparse", offset, "abc");
    child(u"sparse").copyFile(child(u"copy"), ReplacementPolicy::Overwrite);
    copy(u"sparse", u"atomic");
    for (const auto* name : {"copy", "atomic"}) {
      EXPECT_EQ(statusOf(name).st_size, size);
      EXPECT_LT(statusOf(name).st_blocks, 2048) << name;
      for (const auto offset : layout.data)
        EXPECT_EQ(bytesAt(name, offset, 3), "abc");
    }
  }
}

TEST_F(CopyTest, ReplacesWhatIsLongerOnlyWithWhatIsThere) {
  put("long", std::string(100'000, 'x'));
  put("short", "y");
  child(u"short").copyFile(child(u"long"), ReplacementPolicy::Clobber);
  EXPECT_EQ(content("long"), "y");
}

/// The size that the system tells can be too small or too large.
TEST_F(CopyTest, TakesWhatIsReadAndNotWhatTheSizeSays) {
  for (const std::string name : {"/proc/version", "/sys/kernel/mm/transparent_hugepage/enabled"}) {
    if (!fs::exists(name))
      continue;
    std::ostringstream expected;
    expected << std::ifstream(name).rdbuf();
    StorageItem(folder, StorageIRI(u"file://" + fl::i18n::to_ustring(name)))
        .copyFile(child(u"copy"), ReplacementPolicy::Overwrite);
    EXPECT_EQ(content("copy"), expected.str()) << name;
  }
}

TEST_F(CopyTest, OfItsOwnModeWhenNewAndOfTheReplacedOneElse) {
  put("source", "x");
  put("kept", "y");
  ASSERT_EQ(chmod(native("source").c_str(), 0750), 0);
  ASSERT_EQ(chmod(native("kept").c_str(), 0604), 0);
  copy(u"source", u"new");
  copy(u"source", u"kept");
  child(u"source").copyFile(child(u"plain"), ReplacementPolicy::Overwrite);
  const auto mask = umask(0);
  umask(mask);
  EXPECT_EQ(statusOf("new").st_mode & 07777, 0750U & ~mask);
  EXPECT_EQ(statusOf("plain").st_mode & 07777, 0750U & ~mask);
  EXPECT_EQ(statusOf("kept").st_mode & 07777, 0604U);
}

TEST_F(CopyTest, AsksAfterEachFourMebibytes) {
  const struct {
    std::int64_t size;
    int questions;
  } cases[] = {{0, 0}, {1, 1}, {4 * mebibyte, 1}, {4 * mebibyte + 1, 2}, {40 * mebibyte, 10}};
  for (const bool isSparse : {false, true})
    for (const auto& row : cases) {
      SCOPED_TRACE(std::to_string(row.size) + (isSparse ? " sparse" : ""));
      put("source", isSparse ? "" : std::string(static_cast<std::size_t>(row.size), 'x'));
      fs::resize_file(native("source"), static_cast<std::uintmax_t>(row.size));
      int questions = 0;
      const auto count = [&] {
        ++questions;
        return InterruptSignal::Continue;
      };
      EXPECT_EQ(copy(u"source", u"copy", count), TransactionStatus::Completed);
      EXPECT_EQ(questions, row.questions);
      EXPECT_EQ(statusOf("copy").st_size, row.size);
    }
}

TEST_F(CopyTest, LeavesNothingBehindWhenItIsStopped) {
  put("source", std::string(9 * mebibyte, 'x'));
  put("copy", "old");
  for (int stopAt = 1; stopAt <= 3; ++stopAt) {
    int questions = 0;
    const auto stop = [&] { return ++questions == stopAt ? InterruptSignal::Abort : InterruptSignal::Continue; };
    EXPECT_EQ(copy(u"source", u"copy", stop), TransactionStatus::Aborted);
    EXPECT_EQ(questions, stopAt);
    EXPECT_EQ(content("copy"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(path), fs::directory_iterator()), 2);
  }
  EXPECT_THROW(copy(u"source", u"copy", []() -> InterruptSignal { throw std::runtime_error("no"); }),
               std::runtime_error);
  EXPECT_EQ(std::distance(fs::directory_iterator(path), fs::directory_iterator()), 2);
}

}  // namespace
}  // namespace foundation::storage::backend::local
