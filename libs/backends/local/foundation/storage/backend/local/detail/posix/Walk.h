#pragma once

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>

#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::local::detail {

/// How a walk treats what the names on its way are.
struct WalkRules {
  bool isConfined;    ///< nothing may lead out of the folder where the walk began
  bool followsLinks;  ///< on the way; at the end only if asked to
};

/// Follows a path one name at a time, opening each folder by its name in the one before, so that whatever others
/// rename or link meanwhile, it never is where no rule allowed it to go. For paths of any length.
class Walk {
 public:
  /// @param root  an open folder, for as long as the walk lives
  Walk(int root, WalkRules rules);

  /// @param path        relative to `root`
  /// @param followsLast whether a link at the end is followed
  /// @return whether there is such a place: a folder, and a name in it at which there may be nothing. errno says why
  ///         not.
  bool go(std::string_view path, bool followsLast);

  /// Where the walk ended: the folder of the entry, and its name there, "." for the folder itself.
  int folder() const noexcept { return top_.isOpen() ? top_.get() : root_; }
  Descriptor takeFolder();
  const std::string& name() const noexcept { return name_; }
  /// What is there, opened with O_PATH; not open where nothing is.
  const Descriptor& entry() const noexcept { return entry_; }
  Descriptor takeEntry() noexcept { return std::move(entry_); }
  /// After a walk that failed with ENOENT: whether that is since its end asks for a folder, with '/' or ".", where
  /// there is nothing.
  bool lacksFolderAtEnd() const noexcept { return lacksFolderAtEnd_; }
  /// The path of the entry, relative to the root, without links and dots; empty for the root itself.
  std::string path() const;

 private:
  void push(std::string_view path);
  bool step(bool followsLast);
  bool goUp();
  bool reopen();
  bool followLink();
  bool enter(std::string name);

  static constexpr int maximumLinks = 40;  ///< the system's own limit (path_resolution(7))

  const int root_;
  const WalkRules rules_;
  std::vector<std::string> pending_;  ///< the next one last
  std::vector<std::string> names_;    ///< of the folders from the root to the top
  Descriptor top_;                    ///< not open: the root
  std::string name_;
  Descriptor entry_;
  int links_ = 0;
  bool lacksFolderAtEnd_ = false;
};

}  // namespace foundation::storage::backend::local::detail
