#include <foundation/storage/backend/local/detail/posix/FileSystem.h>

#include <foundation/storage/backend/local/detail/posix/OutOfRoot.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/backend/local/detail/posix/Walk.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <linux/openat2.h>
#include <string_view>
#include <utility>

namespace foundation::storage::backend::local::detail {
namespace {

constexpr int maximumTries = 64;

/// The next name of a path, without '/' and "."; empty at the end.
std::string_view takeName(std::string_view& path) {
  for (;;) {
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
    const auto name = path.substr(0, path.find('/'));
    path.remove_prefix(name.size());
    if (name != ".")
      return name;
  }
}

/// What follows `root` in a path that begins with it.
std::optional<std::string_view> below(std::string_view root, std::string_view path) {
  for (auto name = takeName(root); !name.empty(); name = takeName(root))
    if (takeName(path) != name)
      return std::nullopt;
  path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
  return path;
}

class ConfinedFileSystem final : public FileSystem {
 public:
  ConfinedFileSystem(Descriptor root, std::string path, std::string canonicalPath, bool followsLinks)
      : root_(std::move(root)),
        path_(std::move(path)),
        canonicalPath_(std::move(canonicalPath)),
        followsLinks_(followsLinks),
        kernelConfines_(Descriptor(openBeneath(".", O_PATH | O_CLOEXEC, 0)).isOpen()) {}

  Descriptor open(const std::string& path, int flags, mode_t mode) const override {
    const auto rest = within(path);
    return rest ? openWithin(*rest, flags | O_CLOEXEC, mode) : Descriptor();
  }

  std::optional<Place> place(const std::string& path) const override {
    const auto rest = within(path);
    if (!rest)
      return std::nullopt;
    const auto nameAt = rest->rfind('/') == std::string::npos ? 0 : rest->rfind('/') + 1;
    if (rest->substr(nameAt) == "..") {  // no entry's own name
      errno = EINVAL;
      return std::nullopt;
    }
    auto folder = openWithin(nameAt == 0 ? "." : rest->substr(0, nameAt), O_PATH | O_DIRECTORY | O_CLOEXEC, 0);
    if (!folder.isOpen())
      return std::nullopt;
    const int number = folder.get();
    return Place{std::move(folder), number, rest->substr(nameAt)};
  }

  std::optional<Reached> reach(const std::string& path, Links links) const override {
    auto entry = look(path, links);
    if (!entry.isOpen())
      return std::nullopt;
    auto way = "/proc/self/fd/" + std::to_string(entry.get());
    return Reached{std::move(entry), std::move(way)};
  }

  int status(const std::string& path, Links links, struct stat& status) const override {
    const auto entry = look(path, links);
    return entry.isOpen() ? sys().fstat(entry.get(), &status) : -1;
  }

  std::optional<std::string> canonical(const std::string& path) const override { return walked(path, true); }
  std::optional<std::string> target(const std::string& path) const override { return walked(path, false); }
  bool isWhole() const noexcept override { return false; }

 private:
  std::optional<std::string> within(const std::string& path) const {
    auto rest = below(path_, path);
    if (!rest)
      rest = below(canonicalPath_, path);
    if (!rest) {
      errno = leadsOutOfRoot;
      return std::nullopt;
    }
    return rest->empty() ? "." : std::string(*rest);
  }

  Descriptor look(const std::string& path, Links links) const {
    const bool keeps = links == Links::Keep || !followsLinks_;
    return open(path, O_PATH | (keeps ? O_NOFOLLOW : 0), 0);
  }

  Descriptor openWithin(const std::string& path, int flags, mode_t mode) const {
    for (int i = 0; kernelConfines_ && path.size() < PATH_MAX && i < maximumTries; ++i) {
      Descriptor opened(openBeneath(path.c_str(), flags, mode));
      if (!opened.isOpen() && errno == EXDEV)
        errno = leadsOutOfRoot;
      // EAGAIN: something was moved meanwhile, and the kernel could not be sure; also what a lease says (fcntl(2))
      if (opened.isOpen() || errno != EAGAIN)
        return opened;
    }
    return openByWalk(path, flags, mode);
  }

  int openBeneath(const char* path, int flags, mode_t mode) const {
    const std::uint64_t resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS | (followsLinks_ ? 0 : RESOLVE_NO_SYMLINKS);
    const mode_t usedMode = (flags & O_CREAT) != 0 ? mode & 07777 : 0;  // else the kernel refuses it
    return sys().openBeneath(root_.get(), path, flags, usedMode, resolve);
  }

  Descriptor openByWalk(const std::string& path, int flags, mode_t mode) const {
    const bool isExclusive = (flags & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL);
    const bool followsLast = (flags & O_NOFOLLOW) == 0 && !isExclusive;
    for (int i = 0; i < maximumTries; ++i) {
      Walk walk(root_.get(), {.isConfined = true, .followsLinks = followsLinks_});
      if (!walk.go(path, followsLast)) {
        if (walk.lacksFolderAtEnd() && errno == ENOENT && (flags & O_CREAT) != 0)
          errno = EISDIR;  // as open(2) says it
        return {};
      }
      if ((flags & O_PATH) != 0)
        return lookedAt(walk, flags);
      // The walk has left no link at the end, unless one is asked for, or has come there since.
      Descriptor opened(sys().openat(walk.folder(), walk.name().c_str(), flags | O_NOFOLLOW, mode));
      if (opened.isOpen() || errno != ELOOP || !followsLast)
        return opened;
    }
    errno = ELOOP;
    return {};
  }

  /// What the walk has opened already is what it made sure of.
  static Descriptor lookedAt(Walk& walk, int flags) {
    auto entry = walk.takeEntry();
    struct stat status;
    if (!entry.isOpen())
      errno = ENOENT;
    else if (sys().fstat(entry.get(), &status) == -1)
      return {};
    else if ((flags & O_DIRECTORY) == 0 || S_ISDIR(status.st_mode))
      return entry;
    else
      errno = ENOTDIR;
    return {};
  }

  std::optional<std::string> walked(const std::string& path, bool mustExist) const {
    const auto rest = within(path);
    Walk walk(root_.get(), {.isConfined = true, .followsLinks = followsLinks_});
    if (!rest)
      return std::nullopt;
    if (!walk.go(*rest, followsLinks_)) {
      if (!mustExist && walk.lacksFolderAtEnd() && errno == ENOENT)
        errno = EISDIR;  // no file can be made there
      return std::nullopt;
    }
    if (mustExist && !walk.entry().isOpen()) {
      errno = ENOENT;
      return std::nullopt;
    }
    const auto inner = walk.path();
    return canonicalPath_ + (inner.empty() || canonicalPath_ == "/" ? "" : "/") + inner;
  }

  const Descriptor root_;
  const std::string path_;
  const std::string canonicalPath_;
  const bool followsLinks_;
  const bool kernelConfines_;  ///< else the walk does
};

}  // namespace

std::shared_ptr<const FileSystem> confinedFileSystem(const std::string& root, bool followsLinks) {
  const auto canonicalPath = wholeFileSystem()->canonical(root);
  if (!canonicalPath)
    return nullptr;
  auto folder = wholeFileSystem()->open(*canonicalPath, O_PATH | O_DIRECTORY);
  if (!folder.isOpen())
    return nullptr;
  return std::make_shared<const ConfinedFileSystem>(std::move(folder), root, *canonicalPath, followsLinks);
}

}  // namespace foundation::storage::backend::local::detail
