#include <foundation/storage/backend/local/detail/posix/Walk.h>

#include <foundation/storage/backend/local/detail/posix/OutOfRoot.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <utility>

namespace foundation::storage::backend::local::detail {
namespace {

constexpr int lookOnly = O_PATH | O_NOFOLLOW | O_CLOEXEC;

Descriptor openAt(int folder, const std::string& name, int flags) {
  return Descriptor(sys().openat(folder, name.c_str(), flags, 0));
}

/// The text of an open link.
std::optional<std::string> readLink(int link) {
  std::string text(PATH_MAX, '\0');  // none is longer (symlink(7))
  const auto size = sys().readlinkat(link, "", text.data(), text.size());
  if (size == -1)
    return std::nullopt;
  text.resize(static_cast<std::size_t>(size));
  return text;
}

bool failWith(int error) {
  errno = error;
  return false;
}

}  // namespace

Walk::Walk(int root, WalkRules rules) : root_(root), rules_(rules) {}

bool Walk::go(std::string_view path, bool followsLast) {
  push(path);
  name_ = ".";
  while (!pending_.empty())
    if (!step(followsLast))
      return false;
  if (name_ == ".")
    entry_ = openAt(folder(), ".", lookOnly);
  return name_ != "." || entry_.isOpen();
}

Descriptor Walk::takeFolder() { return top_.isOpen() ? std::move(top_) : openAt(root_, ".", O_PATH | O_CLOEXEC); }

std::string Walk::path() const {
  std::string path;
  for (const auto& name : names_)
    path += name + "/";
  path += name_ == "." ? "" : name_;
  if (path.ends_with('/'))
    path.pop_back();
  return path;
}

/// Puts the names of a path before those that are still to be gone. A '/' at the end asks for a folder, as "." does.
void Walk::push(std::string_view path) {
  std::vector<std::string> names;
  const bool asksForFolder = path.ends_with('/');
  while (!path.empty()) {
    const auto size = std::min(path.find('/'), path.size());
    if (size > 0)
      names.emplace_back(path.substr(0, size));
    path.remove_prefix(std::min(size + 1, path.size()));
  }
  if (asksForFolder)
    names.emplace_back(".");
  pending_.insert(pending_.end(), names.rbegin(), names.rend());
}

bool Walk::step(bool followsLast) {
  const auto name = std::move(pending_.back());
  pending_.pop_back();
  const bool isLast = pending_.empty();
  name_ = ".";
  if (name == ".")
    return true;
  if (name == "..")
    return goUp();
  entry_ = openAt(folder(), name, lookOnly);
  if (!entry_.isOpen()) {
    name_ = name;
    const auto isDot = [](const std::string& later) { return later == "."; };
    lacksFolderAtEnd_ = !isLast && std::all_of(pending_.begin(), pending_.end(), isDot);
    return isLast && errno == ENOENT;
  }
  struct stat status;
  if (sys().fstat(entry_.get(), &status) == -1)
    return false;
  if (S_ISLNK(status.st_mode) && !(isLast && !followsLast))
    return followLink();
  if (!isLast)
    return S_ISDIR(status.st_mode) ? enter(name) : failWith(ENOTDIR);
  name_ = name;
  return true;
}

bool Walk::enter(std::string name) {
  top_ = Descriptor(std::move(entry_));
  names_.push_back(std::move(name));
  return true;
}

/// Up by the way that the walk came, not by "..", which leads elsewhere once a folder has been moved.
bool Walk::goUp() {
  if (names_.empty())
    return rules_.isConfined ? failWith(leadsOutOfRoot) : true;
  names_.pop_back();
  return reopen();
}

bool Walk::reopen() {
  Descriptor top;
  for (const auto& name : names_) {
    auto next = openAt(top.isOpen() ? top.get() : root_, name, lookOnly | O_DIRECTORY);
    if (!next.isOpen())
      return false;
    top = std::move(next);
  }
  top_ = std::move(top);
  return true;
}

bool Walk::followLink() {
  if (!rules_.followsLinks || ++links_ > maximumLinks)
    return failWith(ELOOP);
  const auto text = readLink(std::exchange(entry_, Descriptor()).get());
  if (!text)
    return false;
  if (text->empty())
    return failWith(ENOENT);
  if (text->starts_with('/')) {
    if (rules_.isConfined)
      return failWith(leadsOutOfRoot);
    names_.clear();
    top_ = Descriptor();
  }
  push(*text);
  return true;
}

}  // namespace foundation::storage::backend::local::detail
