#include <foundation/storage/backend/local/detail/posix/FileSystem.h>

#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/backend/local/detail/posix/Walk.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

namespace foundation::storage::backend::local::detail {
namespace {

constexpr WalkRules anywhere{.isConfined = false, .followsLinks = true};

bool isShort(const std::string& path) { return path.size() < PATH_MAX; }

/// The way by single names, for paths that are too long for the system calls.
class LongPath {
 public:
  LongPath(const std::string& path, Links links)
      : root_(sys().openat(AT_FDCWD, "/", O_PATH | O_DIRECTORY | O_CLOEXEC, 0)), walk_(root_.get(), {anywhere}) {
    isFound_ = root_.isOpen() && walk_.go(path, links == Links::Follow);
  }

  Walk* found() { return isFound_ ? &walk_ : nullptr; }
  bool lacksFolderAtEnd() const { return walk_.lacksFolderAtEnd(); }

 private:
  Descriptor root_;
  Walk walk_;
  bool isFound_;
};

class WholeFileSystem final : public FileSystem {
 public:
  Descriptor open(const std::string& path, int flags, mode_t mode) const override {
    const auto place = this->place(path);
    if (!place)
      return {};
    return Descriptor(sys().openat(place->folder, place->name.c_str(), flags | O_CLOEXEC, mode));
  }

  std::optional<Place> place(const std::string& path) const override {
    if (isShort(path))
      return Place{{}, AT_FDCWD, path};
    LongPath way(path, Links::Keep);
    if (!way.found())
      return std::nullopt;
    auto folder = way.found()->takeFolder();
    const int number = folder.get();
    return Place{std::move(folder), number, way.found()->name()};
  }

  std::optional<Reached> reach(const std::string& path, Links links) const override {
    if (isShort(path))
      return Reached{{}, path};
    const auto place = this->place(path);
    if (!place)
      return std::nullopt;
    const int flags = O_PATH | O_CLOEXEC | (links == Links::Keep ? O_NOFOLLOW : 0);
    Descriptor entry(sys().openat(place->folder, place->name.c_str(), flags, 0));
    if (!entry.isOpen())
      return std::nullopt;
    auto way = "/proc/self/fd/" + std::to_string(entry.get());
    return Reached{std::move(entry), std::move(way)};
  }

  int status(const std::string& path, Links links, struct stat& status) const override {
    const auto place = this->place(path);
    const int flags = links == Links::Keep ? AT_SYMLINK_NOFOLLOW : 0;
    return place ? sys().fstatat(place->folder, place->name.c_str(), &status, flags) : -1;
  }

  std::optional<std::string> canonical(const std::string& path) const override {
    struct Free {
      void operator()(char* text) const { std::free(text); }
    };
    const std::unique_ptr<char, Free> found(sys().realpath(path.c_str()));
    if (found != nullptr)
      return found.get();
    if (errno != ENAMETOOLONG)
      return std::nullopt;
    LongPath way(path, Links::Follow);
    if (!way.found() || !way.found()->entry().isOpen())
      return std::nullopt;
    return "/" + way.found()->path();
  }

  std::optional<std::string> target(const std::string& path) const override {
    LongPath way(path, Links::Follow);
    if (way.found())
      return "/" + way.found()->path();
    if (way.lacksFolderAtEnd() && errno == ENOENT)
      errno = EISDIR;  // no file can be made there
    return std::nullopt;
  }

  bool isWhole() const noexcept override { return true; }
};

}  // namespace

std::shared_ptr<const FileSystem> wholeFileSystem() {
  static const auto whole = std::make_shared<const WholeFileSystem>();
  return whole;
}

}  // namespace foundation::storage::backend::local::detail
