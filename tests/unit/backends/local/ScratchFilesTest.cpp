// Sweeping what crashed programs left behind.

#include "TemporaryFolder.h"

#include <foundation/storage/provider/ScratchFiles.h>

#include <boost/date_time/gregorian/greg_date.hpp>
#include <boost/date_time/posix_time/posix_time_duration.hpp>

#include <ctime>
#include <set>
#include <thread>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;
namespace posix_time = boost::posix_time;

const posix_time::ptime limit(boost::gregorian::date(2020, 1, 1));

TEST(ScratchNameTest, IsToldFromOthers) {
  const struct {
    std::u16string name;
    bool isScratch;
  } cases[] = {
      {makeScratchName(), true},
      {u".01234567-89ab-cdef-0123-456789abcdef.tmp.bak", true},
      {u"", false},
      {u".tmp.bak", false},
      {u"..tmp.bak", false},
      {u"01234567-89ab-cdef-0123-456789abcdef.tmp.bak", false},
      {u".01234567-89AB-CDEF-0123-456789ABCDEF.tmp.bak", false},
      {u".01234567-89ab-cdef-0123-456789abcdef.tmp", false},
      {u".01234567-89ab-cdef-0123-456789abcdef.tmp.bak ", false},
      {u".01234567-89ab-cdef-0123-456789abcdef.tmp.bak.tmp.bak", false},
      {u".01234567-89ab-cdef-0123-456789abcde.tmp.bak", false},
      {u".0123456789ab-cdef-0123-456789abcdef00.tmp.bak", false},
      {u".01234567-89ab-cdef-0123-456789abcdeg.tmp.bak", false},
      {u".xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx.tmp.bak", false},
      {u".01234567x89ab-cdef-0123-456789abcdef.tmp.bak", false},
      {u".01234567-89ab-cdef-0123-456789abcdef\u00b7tmp.bak", false},
  };
  for (const auto& [name, isScratch] : cases)
    EXPECT_EQ(isScratchName(name), isScratch) << fl::i18n::to_string(name);
  EXPECT_NE(makeScratchName(), makeScratchName());
}

class ScratchFilesTest : public LocalTest {
 protected:
  /// A file last modified before the limit (or after it, by seconds).
  std::string putAged(const std::string& name, std::time_t seconds = -1) const {
    static const posix_time::ptime epoch(boost::gregorian::date(1970, 1, 1));
    put(name, "half a cont");
    const timespec time{static_cast<std::time_t>((limit - epoch).total_seconds()) + seconds, 0};
    const timespec times[] = {time, time};
    EXPECT_EQ(utimensat(AT_FDCWD, native(name).c_str(), times, 0), 0);
    return name;
  }

  static std::string scratchName() { return fl::i18n::to_string(makeScratchName()); }

  std::set<std::string> names() const {
    std::set<std::string> found;
    for (const auto& entry : fs::directory_iterator(path))
      found.insert(entry.path().filename().string());
    return found;
  }
};

TEST_F(ScratchFilesTest, GoOnlyWhereTheyAreOldAndTheFoldersOwn) {
  for (int i = 0; i < 3; ++i)
    putAged(scratchName());
  const auto inner = scratchName(), link = scratchName();
  fs::create_directory(native(inner));
  const auto old = putAged("old");
  fs::create_symlink(old, native(link));
  const std::set<std::string> kept{putAged(scratchName(), 0), putAged(scratchName(), 1), inner, link, old};
  const auto below = putAged(inner + "/" + scratchName());
  EXPECT_EQ(removeScratchFiles(folder, limit), 3u);
  EXPECT_EQ(names(), kept);
  EXPECT_TRUE(fs::exists(native(below)));
  EXPECT_EQ(removeScratchFiles(folder, posix_time::not_a_date_time), 0u);
  const auto missing = child(u"missing");
  EXPECT_EQ(codeThrownAt(missing, [&] { removeScratchFiles(missing, limit); }), ErrorCode::ResourceNotFound);
}

TEST_F(ScratchFilesTest, AreCountedOnceByManySweepers) {
  constexpr std::size_t files = 500;
  for (std::size_t i = 0; i < files; ++i)
    putAged(scratchName());
  std::vector<std::size_t> removed(4);
  std::vector<std::thread> threads;
  for (auto& count : removed)
    threads.emplace_back([this, &count] { EXPECT_NO_THROW(count = removeScratchFiles(folder, limit)); });
  for (auto& thread : threads)
    thread.join();
  EXPECT_EQ(removed[0] + removed[1] + removed[2] + removed[3], files);
  EXPECT_EQ(names().size(), 0u);
}

TEST_F(ScratchFilesTest, AreAllTriedBeforeAFailureIsReported) {
  if (geteuid() != 0)
    GTEST_SKIP() << "only root can make files for others";
  constexpr uid_t other = 65534;
  std::set<std::string> kept;
  for (int i = 0; i < 8; ++i) {
    kept.insert(putAged(scratchName()));
    ASSERT_EQ(chown(native(putAged(scratchName())).c_str(), other, other), 0);
  }
  ASSERT_EQ(chmod(path.c_str(), 01777), 0);  // each may remove their own
  {
    const WithoutPrivileges user;
    try {
      removeScratchFiles(folder, limit);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const Exception& failure) {
      EXPECT_EQ(failure.getErrorCode(), ErrorCode::PermissionDenied);
      EXPECT_TRUE(kept.contains(fl::i18n::to_string(failure.getStorageIRI().getName())));
    }
  }
  EXPECT_EQ(names(), kept);
}

}  // namespace
}  // namespace foundation::storage::backend::local
