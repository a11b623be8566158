#pragma once

#include "ConfinedOperations.h"
#include "ReplacedCalls.h"
#include "TemporaryFolder.h"

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>

#include <boost/property_tree/ptree.hpp>

#include <cerrno>
#include <ctime>
#include <iterator>
#include <map>
#include <sstream>
#include <sys/xattr.h>

namespace foundation::storage::backend::local {

namespace fs = std::filesystem;
using Tree = boost::property_tree::ptree;

/// Who keeps a provider in its folder.
enum class Guard { Kernel, Walk };

inline constexpr Guard guards[] = {Guard::Kernel, Guard::Walk};

inline const auto withoutOpenBeneath = [] {
  auto calls = detail::realSystemCalls;
  calls.openBeneath = [](int, const char*, int, mode_t, std::uint64_t) noexcept {
    errno = ENOSYS;
    return -1;
  };
  return calls;
}();

inline std::vector<std::string> words(const std::string& text) {
  std::istringstream in(text);
  return {std::istream_iterator<std::string>(in), {}};
}

/// Names and what they lead to; '@' stands for the folder that holds the root and the outside.
inline const auto links = words(
    "to-file:@/outside/file to-area:@/outside/area up-file:../outside/file up-area:../outside/area "
    "to-root:@/root to-inside:@/root/folder parent:.. self:. chain:folder/chain "
    "folder/chain:../chained chained:../outside/area back:../root/folder in:folder in-twice:in/deep "
    "folder/up:.. folder/away:../../outside/area folder/file-away:../../outside/file loop:loop "
    "dangling:../outside/new to-dangling:@/outside/new dangling-in:new dangling-deep:folder/no/new "
    "slashed:folder/ slashed-file:file/");

/// A folder to be confined to, "root", among others that nothing is to lead to.
class ConfinedTest : public LocalTest {
 protected:
  ConfinedTest() : LocalTest(quickFolder()) {}

  /// In memory, where that is to be had: a disk's journal would take most of the time of thousands of trees.
  static fs::path quickFolder() {
    const fs::path memory("/dev/shm");
    return ::access(memory.c_str(), W_OK | X_OK) == 0 ? memory : fs::temp_directory_path();
  }

  void SetUp() override {
    fs::create_directories(native("outside/area/deep"));
    fs::create_directories(native("root-twin"));
    fs::create_directory_symlink("root", native("way"));
    put("outside/area/" + secret, secret);
    for (const auto* name : {"outside/file", "outside/area/file", "outside/area/deep/file", "root-twin/file"})
      makeSecret(name);
    for (const auto* name : {"outside/area/deep", "outside/area", "outside", "root-twin"})
      setYear(name);
    outsideBefore_ = outside();
  }

  void makeSecret(const std::string& name) {
    std::string bytes = secret;
    bytes.resize(secretSize, '.');
    put(name, bytes);
    ::setxattr(native(name).c_str(), "user.mark", secret.data(), secret.size(), 0);  // where there are any
    setYear(name);
    struct stat status;
    ASSERT_EQ(::stat(native(name).c_str(), &status), 0);
    const auto identity = "local:" + std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
    secretIdentities_.insert(fl::i18n::to_ustring(identity));
  }

  void setYear(const std::string& name) const {
    const std::time_t inThatYear = 982'000'000;
    const timespec times[] = {{inThatYear - 1, 0}, {inThatYear, 0}};  // so that reading it would be noticed
    ASSERT_EQ(::utimensat(AT_FDCWD, native(name).c_str(), times, 0), 0);
  }

  void makeRoot() const {
    fs::create_directories(native("root"));
    fs::create_directories(native("shared"));
    for (const auto* folderName : {"root", "shared"})
      for (const auto& entry : fs::directory_iterator(native(folderName)))
        fs::remove_all(entry.path());
    for (const auto* name : {"root/folder", "root/folder/deep", "root/other-folder", "root/folder/other-folder"})
      fs::create_directory(native(name));
    for (const auto* name : {"root/file", "root/folder/file", "root/folder/deep/file", "root/other", "shared/file",
                             "root/folder/other", "root/%2e%2e"})
      put(name, "inside");
    fs::create_hard_link(native("shared/file"), native("root/hard-link"));
    for (const auto& link : links) {
      const auto target = link.substr(link.find(':') + 1);
      fs::create_symlink(target[0] == '@' ? path + target.substr(1) : target,
                         native("root/" + link.substr(0, link.find(':'))));
    }
    ASSERT_EQ(mkfifo(native("root/pipe").c_str(), 0600), 0);
    ASSERT_EQ(mknod(native("root/socket").c_str(), S_IFSOCK | 0600, 0), 0);
  }

  using Options = std::map<std::string, std::string>;

  static std::shared_ptr<IProvider> configured(const Options& options, Guard guard) {
    const ReplacedCalls replaced(guard == Guard::Walk ? withoutOpenBeneath : detail::realSystemCalls);
    const StorageIRI anywhere(u"file:///");
    auto provider = LocalProviderFactory().buildProvider(anywhere);
    Tree tree;
    for (const auto& [key, value] : options)
      tree.put(key, value);
    StorageItem(provider, anywhere).configure(tree);
    return provider;
  }

  static StorageIRI at(const std::string& text) { return StorageIRI(fl::i18n::to_ustring("file://" + text)); }

  Subject subjectAt(std::shared_ptr<IProvider> provider, const std::string& text, const std::string& root) const {
    const auto item = [&](const std::string& name) { return StorageItem(provider, at(name)); };
    return {provider,         item(text), item(root + "/other"), item(root + "/other-folder"), item(root + "/result"),
            secretIdentities_};
  }

  /// What the operation tells, or its failure.
  static std::string told(const Operation& operation, const Subject& subject) {
    try {
      return operation.run(subject);
    } catch (const Exception& failure) {
      return text(failure.getErrorCode());
    } catch (const ByteStreamFailure& failure) {
      return text(failure.getErrorCode());
    }
  }

  /// A line for each entry of a folder and below it.
  template <class Line>
  std::string seen(const std::string& name, const Line& line, const std::set<std::string>& leftOut = {}) const {
    std::set<std::string> lines;
    for (auto at = fs::recursive_directory_iterator(native(name)); at != fs::recursive_directory_iterator(); ++at) {
      if (leftOut.contains(at->path().filename().string()))
        at.disable_recursion_pending();
      else
        lines.insert(at->path().string() + " " + line(at->path()) + "\n");
    }
    std::string all;
    for (const auto& one : lines)
      all += one;
    return all;
  }

  std::string outside() const { return seen(".", traces, {"root", "shared"}); }
  std::string outsideContent() const { return seen(".", content, {"root", "shared"}); }

  /// What nobody does anything to an entry without changing; reading a file changes its time of access.
  static std::string traces(const fs::path& entry) {
    struct stat status;
    EXPECT_EQ(::lstat(entry.c_str(), &status), 0) << entry;
    const auto readAt = S_ISREG(status.st_mode) ? status.st_atim : timespec{};
    return text(status.st_mode, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec, status.st_ctim.tv_sec,
                status.st_ctim.tv_nsec, readAt.tv_sec, readAt.tv_nsec);
  }

  /// Without leaving traces.
  static std::string content(const fs::path& entry) {
    const auto type = fs::symlink_status(entry);
    auto all = text(static_cast<int>(type.type()), static_cast<int>(type.permissions()));
    if (fs::is_symlink(type))
      return all + fs::read_symlink(entry).string();
    if (!fs::is_regular_file(type))
      return all;
    const detail::Descriptor file(::open(entry.c_str(), O_RDONLY | O_NOATIME | O_NOFOLLOW | O_CLOEXEC));
    std::string bytes(2 * secretSize, '\0');
    const auto size = ::read(file.get(), bytes.data(), bytes.size());
    EXPECT_GE(size, 0) << entry;
    return all + bytes.substr(0, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  }

  static void expectNothingSecret(const std::string& told) {
    for (const auto& mark : {secret, "size " + std::to_string(secretSize), "year " + std::to_string(secretYear)})
      EXPECT_EQ(told.find(mark), std::string::npos) << mark;
  }

  /// What an operation tells at a location, and what it makes of the root, which is as new before.
  std::string outcome(const Options& options, const std::string& way, const Operation& operation, Guard guard) {
    if (rootBefore_.empty()) {
      makeRoot();
      rootBefore_ = seen("root", traces);
    }
    const auto root = options.contains("root") ? options.at("root") : native("root");
    auto told = this->told(operation, subjectAt(configured(options, guard), native(way), root));
    expectNothingSecret(told);
    EXPECT_EQ(outside(), outsideBefore_);
    if (seen("root", traces) == rootBefore_)
      return told;
    rootBefore_.clear();
    return told + seen("root", content);
  }

  const std::vector<Operation> operations_ = everyOperation();
  std::set<std::u16string> secretIdentities_;
  std::string outsideBefore_;
  std::string rootBefore_;  ///< empty where it has been changed
};

}  // namespace foundation::storage::backend::local
