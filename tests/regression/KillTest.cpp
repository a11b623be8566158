// Kills programs that replace a file: whatever the moment, the file is whole.

#include "Killing.h"
#include "TemporaryFolder.h"

#include <foundation/storage/provider/ScratchFiles.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iostream>
#include <random>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

constexpr int kills = 2000;
constexpr int killsASweep = 100;
constexpr std::size_t largestPayload = 120 * 1024;

using testing::draw;
using testing::startAndKill;

/// What stands in front of a content: of no other one, nor of a part or a mixture, are both true.
struct Header {
  std::uint64_t size = 0;
  std::uint64_t checksum = 0;

  explicit Header(std::string_view payload) : size(payload.size()), checksum(std::hash<std::string_view>()(payload)) {}

  std::string bytes() const {
    std::string text(sizeof size + sizeof checksum, '\0');
    std::memcpy(text.data(), &size, sizeof size);
    std::memcpy(text.data() + sizeof size, &checksum, sizeof checksum);
    return text;
  }
};

constexpr std::size_t headerSize = 16;

std::string makeContent(std::size_t payloadSize, std::mt19937& random) {
  std::string payload(payloadSize, '\0');
  for (auto& byte : payload)
    byte = static_cast<char>(random());
  return Header(payload).bytes() + payload;
}

bool isWhole(std::string_view content) {
  return content.size() >= headerSize && content.substr(0, headerSize) == Header(content.substr(headerSize)).bytes();
}

/// The program that is killed.
class Replacer {
 public:
  Replacer(StorageItem target, std::vector<StorageItem> sources, const std::vector<std::string>& contents)
      : target_(std::move(target)), sources_(std::move(sources)), contents_(contents) {}

  void seed(std::mt19937::result_type seed) { random_.seed(seed); }

  /// Once, in one way or another.
  void replace() {
    switch (draw(random_, 8)) {
      case 0:
        return writeTo(*open());  // and drop it
      case 1:
        return end(StreamClosePolicy::Abort);
      case 2:
        return copy();
      default:
        return end(StreamClosePolicy::Commit);
    }
  }

 private:
  std::unique_ptr<TransactionalStream> open() {
    return target_.openTransactionalStream(
        {.access = draw(random_, 2) == 0 ? ByteStreamAccess::WriteOnly : ByteStreamAccess::ReadWrite});
  }

  void writeTo(TransactionalStream& stream) {
    const auto& content = contents_[draw(random_, contents_.size())];
    for (std::size_t done = 0; done < content.size();) {
      const auto size = std::min<std::size_t>(content.size() - done, 1 + draw(random_, largestPayload / 2));
      done += static_cast<std::size_t>(stream.write(content.data() + done, static_cast<std::int64_t>(size)));
    }
  }

  void end(StreamClosePolicy policy) {
    const auto stream = open();
    writeTo(*stream);
    stream->close(policy);
  }

  void copy() {
    sources_[draw(random_, sources_.size())].copyFile(
        target_, {.replacementPolicy = ReplacementPolicy::Overwrite, .transactionPolicy = TransactionPolicy::Atomic});
  }

  StorageItem target_;
  std::vector<StorageItem> sources_;
  const std::vector<std::string>& contents_;
  std::mt19937 random_;
};

class KillTest : public LocalTest {
 protected:
  void SetUp() override {
    constexpr int number = 64;
    for (int i = 0; i < number; ++i)
      contents.push_back(makeContent(i == 0 ? 0 : draw(random, largestPayload), random));
    fs::create_directories(native("sources"));
    for (int i = 0; i < 4; ++i)
      put("sources/" + std::to_string(i), contents[static_cast<std::size_t>(i)]);
    fs::create_directories(native("folder"));
    put("folder/target", contents.front());
    for (const auto& name : bystanders)
      put("folder/" + name, name);
  }

  Replacer makeReplacer() const {
    std::vector<StorageItem> sources;
    for (const auto* name : {u"sources/0", u"sources/1", u"sources/2", u"sources/3"})
      sources.push_back(child(name));
    return {child(u"folder/target"), sources, contents};
  }

  /// Fails where anything else than the target, the bystanders and scratch files is there.
  std::size_t countScratchFiles() const {
    std::size_t scratchFiles = 0;
    std::set<std::string> others;
    for (const auto& entry : fs::directory_iterator(native("folder")))
      if (const auto name = entry.path().filename().string(); isScratchName(fl::i18n::to_ustring(name)))
        ++scratchFiles;
      else
        others.insert(name);
    std::set<std::string> expected(bystanders.begin(), bystanders.end());
    expected.insert("target");
    EXPECT_EQ(others, expected);
    return scratchFiles;
  }

  /// Removes the scratch files, which are `number`, and nothing else.
  void sweep(std::size_t number) const {
    const auto later = boost::posix_time::microsec_clock::universal_time() + boost::posix_time::hours(1);
    EXPECT_EQ(removeScratchFiles(child(u"folder"), later), number);
    EXPECT_EQ(countScratchFiles(), 0u);
  }

  std::mt19937 random{testing::chooseSeed()};
  std::vector<std::string> contents;
  const std::vector<std::string> bystanders{".tmp.bak", ".01234567-89AB-cdef-0123-456789abcdef.tmp.bak",
                                            "01234567-89ab-cdef-0123-456789abcdef.tmp.bak"};
};

TEST_F(KillTest, LeavesTheOldOrTheNewContent) {
  constexpr std::size_t longestDelay = 2500;  // microseconds; a replacement takes some hundred
  auto replacer = makeReplacer();
  auto target = content("folder/target");
  int changes = 0, leftovers = 0;
  std::size_t scratchFiles = 0;
  for (int round = 1; round <= kills; ++round) {
    SCOPED_TRACE(round);
    replacer.seed(random());
    ASSERT_TRUE(startAndKill([&] { replacer.replace(); }, draw(random, longestDelay)));
    const auto before = std::exchange(target, content("folder/target"));
    ASSERT_TRUE(isWhole(target)) << target.size() << " bytes";
    changes += target != before ? 1 : 0;
    const auto left = countScratchFiles() - scratchFiles;
    ASSERT_LE(left, 1u);  // it has one transaction at a time
    leftovers += static_cast<int>(left);
    scratchFiles += left;
    if (round % killsASweep == 0) {
      sweep(scratchFiles);
      scratchFiles = 0;
    }
  }
  std::cout << kills << " kills: " << leftovers << " left a scratch file, " << changes << " came after a commit\n";
  EXPECT_GT(leftovers, 0) << "no kill came within a transaction";
  EXPECT_GT(changes, 0) << "no kill came after a commit";
  for (std::size_t i = 0; i < 4; ++i)
    EXPECT_EQ(content("sources/" + std::to_string(i)), contents[i]);
}

}  // namespace
}  // namespace foundation::storage::backend::local
