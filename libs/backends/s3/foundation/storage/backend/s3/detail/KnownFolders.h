#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail {

/// What this program knows of the folders that it writes to, so that it need not ask before each file whether there is
/// a folder to hold it, and none of its name. Kept for a minute after the folder was last seen or written to.
///
/// Another program may remove the folder in that time: then the file is written all the same, and the folder is back.
/// Or it makes a folder of the file's name: then both are there, as they may be in such a store. Neither loses
/// anything.
///
/// Folders go by their prefixes, the root by the empty one. Any number of threads may use it.
class KnownFolders {
 public:
  using Time = std::chrono::steady_clock::time_point;
  static constexpr std::chrono::seconds lifetime{60};
  static constexpr std::size_t mostFolders = 1000;
  static constexpr std::size_t mostNames = 2000;  ///< of folders in one folder

  /// @param clock  what time it is
  explicit KnownFolders(std::function<Time()> clock = &std::chrono::steady_clock::now);

  /// What was seen of a folder.
  struct Sight {
    bool isMarked = false;             ///< it stays when its last entry goes
    bool isWhole = false;              ///< all that it holds was seen
    std::set<std::string> names = {};  ///< of the folders in it
  };
  /// Counts the changes so far. Asked before looking at a folder, as what was seen before a change is not worth
  /// keeping.
  std::uint64_t changes() const;
  /// @param changes  as it was before the look
  void see(const std::string& prefix, Sight sight, std::uint64_t changes);

  /// Whether the folder is there.
  bool knows(const std::string& prefix) const;
  /// Whether there is no folder of that prefix; false where that is not known.
  bool knowsMissing(const std::string& prefix) const;

  /// An object was written; one whose key ends in '/' stands for a folder.
  void written(const std::string& key);
  /// A file was removed; with it may go the folders that hold it.
  void fileRemoved(const std::string& key);
  /// A folder was created, and is empty.
  void created(const std::string& prefix);
  /// A folder came to be, with whatever it holds.
  void appeared(const std::string& prefix);
  /// Something has become of a folder and what it holds; it has to be looked at anew.
  void forget(const std::string& prefix);
  /// Anything may have become of what has that name, a file or a folder.
  void invalidate(const std::string& prefix);

 private:
  struct Folder {
    Sight sight;
    Time end;
  };
  using Folders = std::map<std::string, Folder, std::less<>>;

  // All without the lock.
  const Folder* find(std::string_view prefix) const;
  void put(const std::string& prefix, Sight sight);
  void addToParent(const std::string& prefix);
  void drop(std::string_view prefix);

  const std::function<Time()> clock_;
  mutable std::mutex mutex_;  ///< guards what follows
  Folders folders_;
  std::uint64_t changes_ = 0;
};

}  // namespace foundation::storage::backend::s3::detail
