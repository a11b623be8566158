#pragma once

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace foundation::storage::backend::local::detail {

class WatchedTree;
struct WatchedFolder;

/// For whom a folder is watched.
struct WatchUser {
  WatchedTree* tree;
  WatchedFolder* folder;  ///< null where the folder lies above the tree
  bool operator==(const WatchUser&) const = default;
};

/// One inotify instance (inotify(7)). The kernel has one watch for an entry however many ask for it, so its users
/// share it. Not for more than one thread at a time.
class Inotify {
 public:
  /// @param location  what failures are to name
  /// Throws `Exception` where there can be no more instances.
  explicit Inotify(const provider::StorageIRI& location);

  int descriptor() const noexcept { return descriptor_.get(); }

  /// Watches what is at `path` for the events in `mask`, too.
  /// @return the number of the watch, the same as long as the same entry is there; -1 and errno
  int add(const std::string& path, std::uint32_t mask) noexcept;

  void join(int watch, const WatchUser& user);

  /// Ends the watch where nobody else uses it. Numbers that the kernel has given up already, and -1, are ignored.
  void leave(int watch, const WatchUser& user) noexcept;

  std::vector<WatchUser> usersOf(int watch) const;
  bool isUsedBy(int watch, const WatchUser& user) const noexcept;

  /// Ends all watches at once.
  void close() noexcept { descriptor_.close(); }

 private:
  Descriptor descriptor_;
  std::unordered_map<int, std::vector<WatchUser>> users_;
};

}  // namespace foundation::storage::backend::local::detail
