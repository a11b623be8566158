#include <foundation/storage/backend/s3/detail/KnownFolders.h>

#include <gtest/gtest.h>

#include <string>

namespace foundation::storage::backend::s3::detail {
namespace {

using std::chrono::seconds;

class KnownFoldersTest : public ::testing::Test {
 protected:
  /// A folder that holds one folder, "sub".
  void see(const std::string& prefix, bool isMarked) {
    known_.see(prefix, {.isMarked = isMarked, .isWhole = true, .names = {"sub"}}, known_.changes());
  }

  KnownFolders::Time now_;
  KnownFolders known_{[this] { return now_; }};
};

TEST_F(KnownFoldersTest, KnowsWhatItHasSeen) {
  see("a/", true);
  EXPECT_TRUE(known_.knows("a/"));
  EXPECT_FALSE(known_.knows("a/sub/")) << "seen from outside, it may be gone with its last entry";
  EXPECT_TRUE(known_.knowsMissing("a/file/"));
  EXPECT_FALSE(known_.knowsMissing("a/sub/"));
  EXPECT_FALSE(known_.knowsMissing("a//file/")) << "in a folder without a name, which was not looked at";
  EXPECT_FALSE(known_.knowsMissing("b/"));
}

TEST_F(KnownFoldersTest, ForgetsAfterAMinuteWithoutWriting) {
  see("a/", true);
  now_ += seconds(59);
  known_.written("a/file");
  now_ += seconds(59);
  EXPECT_TRUE(known_.knows("a/"));
  now_ += seconds(1);
  EXPECT_FALSE(known_.knows("a/"));
  EXPECT_FALSE(known_.knowsMissing("a/file/"));
}

TEST_F(KnownFoldersTest, FollowsWhatComesAndGoes) {
  see("a/", false);
  known_.created("a/new/");
  EXPECT_FALSE(known_.knowsMissing("a/new/"));
  EXPECT_TRUE(known_.knowsMissing("a/new/file/"));
  known_.appeared("a/moved/");
  EXPECT_FALSE(known_.knowsMissing("a/moved/"));
  EXPECT_FALSE(known_.knows("a/moved/"));
  known_.written("a/slash/");
  EXPECT_FALSE(known_.knowsMissing("a/slash/")) << "an object that stands for a folder";
  known_.forget("a/new/");
  EXPECT_FALSE(known_.knows("a/new/"));
  EXPECT_FALSE(known_.knows("a/")) << "it may have gone with it";
}

TEST_F(KnownFoldersTest, AnythingMayHaveBecomeOfWhatIsInvalidated) {
  for (const std::string prefix : {"a/", "a/file/", "a/file/x/", "b/"})
    see(prefix, true);
  known_.invalidate("a/file/");
  EXPECT_FALSE(known_.knowsMissing("a/file/")) << "it may be a folder now";
  EXPECT_FALSE(known_.knows("a/file/x/"));
  EXPECT_TRUE(known_.knows("b/"));
}

TEST_F(KnownFoldersTest, AFolderWithoutAnObjectOfItsOwnMayGoWithItsLastFile) {
  see("made/", true);
  see("made/implied/", false);
  known_.fileRemoved("made/implied/file");
  EXPECT_FALSE(known_.knows("made/implied/"));
  EXPECT_TRUE(known_.knows("made/"));
  known_.fileRemoved("made/");
  EXPECT_FALSE(known_.knows("made/"));
}

TEST_F(KnownFoldersTest, ALookThatAChangeHasOvertakenIsNotKept) {
  const auto before = known_.changes();
  known_.forget("a/");
  known_.see("a/", {}, before);
  EXPECT_FALSE(known_.knows("a/"));
}

TEST_F(KnownFoldersTest, IsBounded) {
  for (std::size_t number = 0; number <= KnownFolders::mostFolders; ++number, now_ += std::chrono::milliseconds(1))
    see(std::to_string(number) + '/', true);
  EXPECT_FALSE(known_.knows("0/")) << "the oldest";
  EXPECT_TRUE(known_.knows("1/"));
  for (std::size_t number = 0; number <= KnownFolders::mostNames; ++number)
    known_.created("1000/" + std::to_string(number) + '/');
  see("a/", true);
  EXPECT_FALSE(known_.knowsMissing("1000/file/"));
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail
