// Kills programs that change archives: whatever the moment, the archive is whole, and one that was committed.

#include "Killing.h"
#include "TemporaryFolder.h"

#include <foundation/storage/backend/archive/ArchiveProviderFactory.h>
#include <foundation/storage/provider/ScratchFiles.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <cstdlib>
#include <map>
#include <memory>
#include <utility>

namespace foundation::storage::backend::archive {
namespace {

namespace fs = std::filesystem;
using local::LocalTest;
using namespace provider;
using testing::draw;
using testing::startAndKill;

constexpr int killsASweep = 50;

using Generation = std::uint32_t;
using Files = std::map<std::string, std::string>;  ///< by their paths in the archive

/// Always the same for the same numbers; something that compresses, and something that does not.
std::string contentOf(Generation generation, std::uint32_t number) {
  std::mt19937 random(generation * 101 + number);
  std::string content("generation " + std::to_string(generation) + " of " + std::to_string(number) + "\n");
  content.append(draw(random, 8 * 1024), 'x');
  for (auto left = draw(random, 24 * 1024); left > 0; --left)
    content.push_back(static_cast<char>(random()));
  return content;
}

constexpr std::uint32_t changing = 6;
constexpr std::uint32_t kept = 3;

std::string changingName(std::uint32_t number) { return "/changing/" + std::to_string(number); }
std::string onlyName(Generation generation) { return "/only in " + std::to_string(generation); }
std::string movedName(Generation generation) { return "/100% moved/" + std::to_string(generation); }

/// What an archive holds that has been changed so often.
Files filesOf(Generation generation) {
  Files files{{onlyName(generation), std::to_string(generation)}, {movedName(generation), contentOf(0, 1000)}};
  for (std::uint32_t number = 0; number < changing; ++number)
    files.emplace(changingName(number), contentOf(generation, number));
  for (std::uint32_t number = 0; number < kept; ++number)
    files.emplace("/kept/" + std::to_string(number), contentOf(0, 2000 + number));
  return files;
}

void write(const StorageItem& file, const std::string& content) {
  const auto stream = file.openTransactionalStream({});
  for (std::size_t done = 0; done < content.size();)
    done += static_cast<std::size_t>(
        stream->write(content.data() + done, static_cast<std::int64_t>(content.size() - done)));
  stream->close(StreamClosePolicy::Commit);
}

std::string read(const StorageItem& file) {
  const auto stream = file.openReadOnlyStream();
  std::string content, buffer(64 * 1024, '\0');
  for (std::int64_t got = 0; (got = stream->read(buffer.data(), static_cast<std::int64_t>(buffer.size()))) > 0;)
    content.append(buffer, 0, static_cast<std::size_t>(got));
  return content;
}

/// An archive, opened anew.
class Archive {
 public:
  Archive(ArchiveFormat format, const std::u16string& scheme, const StorageItem& container)
      : root_(ArchiveProviderFactory(format).buildProvider(container),
              StorageIRI(scheme, container.getLocation(), u"/")) {}

  StorageItem item(const std::string& path) const { return {root_, fl::i18n::to_ustring(path)}; }

  Files files() const {
    Files files;
    for (const auto listing = root_.listAllRecursive(u""); listing->hasNext();) {
      listing->next();
      if (const auto entry = listing->current(); entry.isFile()) {
        const auto path = "/" + fl::i18n::to_string(entry.getName());
        files.emplace(path, read(item(path)));
      }
    }
    return files;
  }

  /// Which one it is by the name of the file that only that one has.
  Generation generation() const {
    for (const auto listing = root_.listFilesNamesOnly(u"only in *"); listing->hasNext();) {
      listing->next();
      return static_cast<Generation>(std::stoul(fl::i18n::to_string(listing->current().getName()).substr(8)));
    }
    throw std::runtime_error("an archive of no generation");
  }

  void create() const {
    root_.createFolder();
    for (const auto* folder : {"/changing", "/kept", "/100% moved"})
      item(folder).createFolder();
    for (const auto& [path, content] : filesOf(0))
      write(item(path), content);
    root_.flushFilesystem();
  }

  /// Makes the next generation of it.
  void change() const {
    const auto before = generation();
    for (std::uint32_t number = 0; number < changing; ++number)
      write(item(changingName(number)), contentOf(before + 1, number));
    write(item(onlyName(before + 1)), std::to_string(before + 1));
    item(onlyName(before)).removeFile();
    item(movedName(before)).moveFile(item(movedName(before + 1)).getLocation(), ReplacementPolicy::Overwrite);
    root_.flushFilesystem();
  }

 private:
  StorageItem root_;
};

struct Trial {
  const char* name;
  ArchiveFormat format;
  const char16_t* scheme;
  const char16_t* file;
  bool isNested;  ///< in a zip
  int kills;
  std::size_t longestDelay;  ///< in microseconds; some changes take as long
  const char* program;       ///< one that tests archives
  const char* arguments;     ///< what stands before the archive's path
};

class ArchiveKillTest : public LocalTest, public ::testing::WithParamInterface<Trial> {
 protected:
  ArchiveKillTest() { fs::create_directory(native("folder")); }

  StorageItem file() const { return child(std::u16string(u"folder/") + GetParam().file); }

  /// As whoever comes next finds it.
  Archive open() const {
    const auto& trial = GetParam();
    if (!trial.isNested)
      return {trial.format, trial.scheme, file()};
    const Archive outer(ArchiveFormat::Zip, u"zip", file());
    return {trial.format, trial.scheme, outer.item("/inner")};
  }

  void create() const {
    if (GetParam().isNested)
      Archive(ArchiveFormat::Zip, u"zip", file()).create();
    open().create();
  }

  /// Fails where anything else than the archive and scratch files is there.
  std::size_t countScratchFiles() const {
    std::size_t scratchFiles = 0;
    for (const auto& entry : fs::directory_iterator(native("folder")))
      if (const auto name = fl::i18n::to_ustring(entry.path().filename().string()); isScratchName(name))
        ++scratchFiles;
      else
        EXPECT_EQ(name, GetParam().file);
    return scratchFiles;
  }

  std::size_t sweep() const {
    const auto later = boost::posix_time::microsec_clock::universal_time() + boost::posix_time::hours(1);
    const auto removed = removeScratchFiles(child(u"folder"), later);
    EXPECT_EQ(countScratchFiles(), 0u);
    return removed;
  }

  std::mt19937 random{testing::chooseSeed()};
};

TEST_P(ArchiveKillTest, LeavesTheOldOrTheNewArchive) {
  const auto& trial = GetParam();
  create();
  Generation generation = 0;
  std::size_t leftovers = 0, changes = 0;
  auto longestDelay = trial.longestDelay;
  for (int round = 1; round <= trial.kills; ++round) {
    SCOPED_TRACE(round);
    std::shared_ptr<const Archive> archive;  // in the process that is killed
    ASSERT_TRUE(startAndKill(
        [&] {
          if (!archive)
            archive = std::make_shared<const Archive>(open());
          archive->change();
        },
        draw(random, longestDelay)));
    const auto before = std::exchange(generation, open().generation());
    ASSERT_GE(generation, before);
    ASSERT_EQ(open().files(), filesOf(generation));
    changes += generation - before;
    if (round % killsASweep == 0)
      leftovers += sweep();
    if (round % 10 == 0 && changes == 0)
      longestDelay *= 2;  // for slow machines, and sanitizers
  }
  std::cout << trial.kills << " kills: " << leftovers << " left a scratch file; " << changes
            << " commits before them\n";
  EXPECT_GT(leftovers, 0u) << "no kill came within a commit";
  EXPECT_GT(changes, 0u) << "no kill came after a commit";
  if (std::system((std::string("command -v ") + trial.program + " >/dev/null").c_str()) != 0)
    GTEST_SKIP() << "there is no " << trial.program << " to test the archive";
  const auto file = native("folder/" + fl::i18n::to_string(trial.file));
  EXPECT_EQ(std::system((std::string(trial.program) + " " + trial.arguments + " " + file + " >/dev/null").c_str()), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Archives, ArchiveKillTest,
    ::testing::Values(Trial{"zip", ArchiveFormat::Zip, u"zip", u"a.zip", false, 500, 12000, "unzip", "-tqq"},
                      Trial{"tarGz", ArchiveFormat::Tar, u"tar", u"a.tar.gz", false, 100, 40000, "tar", "-tzf"},
                      Trial{"zipInZip", ArchiveFormat::Zip, u"zip", u"o.zip", true, 100, 20000, "unzip", "-tqq"}),
    [](const auto& trial) { return trial.param.name; });

}  // namespace
}  // namespace foundation::storage::backend::archive
