#pragma once

#include <foundation/storage/backend/local/detail/posix/ChangePublisher.h>
#include <foundation/storage/backend/local/detail/posix/EntryState.h>
#include <foundation/storage/backend/local/detail/posix/FolderReader.h>
#include <foundation/storage/backend/local/detail/posix/Inotify.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace foundation::storage::backend::local::detail {

/// An entry as it was when it was last looked at.
struct WatchedEntry {
  std::uint64_t time = 0;                 ///< 0 as long as it is not known, or not wanted
  std::unique_ptr<WatchedFolder> folder;  ///< where it has a watch of its own
  events::EntryType type{};
  bool isLink = false;
  bool isListed = false;  ///< for the time of a listing
};

struct WatchedFolder {
  using Entries = std::map<std::string, WatchedEntry, std::less<>>;

  WatchedFolder* parent = nullptr;    ///< none for the watched folder itself
  const std::string* name = nullptr;  ///< its key among the parent's entries
  int watch = -1;
  bool isLeaf = false;   ///< watched for its own time only: a folder that is not descended into, or a link's target
  bool isStale = false;  ///< its entries could not be listed when that was needed
  Entries entries;
};

/// How far a subscription reaches.
enum class Reach { Entries, Subtree, OneFile };

/// How far a look at an entry goes.
enum class Depth {
  Entry,  ///< its type and time
  New,    ///< and, where another folder has come to its place, all that is below
  All,    ///< and in any case all that is below
};

/// One subscription: the entries as they were last published, kept up with the file system.
///
/// The kernel's events are taken as hints where to look. Looking compares an entry with what was last published of
/// it, publishes the difference and remembers the entry as it is now. So events that come late, twice or out of
/// order do no harm, and what the kernel had to drop is made up for by looking everywhere. A hint is needed
/// whenever something may have changed since the last look; therefore watches are added before their folders are
/// listed. All that is published is about paths: what is at a path after the change, whichever file it is. While a
/// folder is moved away, looks at the paths below it find nothing; so a folder that was moved is looked at as a whole,
/// even if it is back.
///
/// Not for more than one thread at a time.
class WatchedTree {
 public:
  /// @param path    of the watched folder, in the system's bytes
  /// @param file    the name of the only entry watched, for `Reach::OneFile`
  /// @param ending  once true, nothing is published any more
  WatchedTree(Inotify& inotify, ChangePublisher publisher, std::string path, Reach reach, std::string file,
              const std::atomic<bool>& ending);
  ~WatchedTree();
  WatchedTree(const WatchedTree&) = delete;
  WatchedTree& operator=(const WatchedTree&) = delete;

  /// Adds the watches and takes the first look, publishing nothing. Throws `Exception`; the destructor gives back
  /// what had been added.
  void begin();

  // Hints. Any of them may end the life of folders of the tree, that given included.

  /// The folder may not be at its place any more. Null: that may be so of the watched folder.
  void checkPlace(WatchedFolder* folder);
  /// The folder may have another last-modified time or other permissions.
  void checkTime(WatchedFolder& folder);
  /// There may be a change at a name in a folder. Null: in the folder that holds the watched one.
  void checkEntry(WatchedFolder* folder, const std::string& name, Depth depth);
  /// Anything may have changed.
  void checkAll();

  /// For a look that has failed: `checkAll` is needed.
  void setUncertain() noexcept { isUncertain_ = true; }
  bool isUncertain() const noexcept { return isUncertain_; }

  /// Gives back all watches; nothing is noticed after that.
  void leaveWatches() noexcept;

  /// Whether the watched folder has gone away. Then nothing is published any more.
  bool isGone() const noexcept { return isGone_; }

 private:
  enum class Following { Not, Itself, Content };

  void watchAbove();
  void watchAboveAnew();
  void watchItself();
  void leaveAll(WatchedFolder& folder) noexcept;
  void end();

  void look(WatchedFolder& folder, const std::string& name, Depth depth);
  void scan(WatchedFolder& folder, Depth depth);
  void list(WatchedFolder& folder);
  Descriptor open(const WatchedFolder& folder) const;
  Examined examineListed(int folder, const RawEntry& entry) const;
  void sweep(WatchedFolder& folder, int descriptor);
  void update(WatchedFolder& folder, const std::string& name, const EntryState& state);
  void remove(WatchedFolder& folder, WatchedFolder::Entries::iterator at);
  void forgetBelow(WatchedEntry& entry);

  Following followingOf(const WatchedEntry& entry) const noexcept;
  void follow(WatchedFolder& folder, const std::string& name, WatchedEntry& entry, Depth depth);
  int addWatch(const WatchedEntry& entry, const std::string& path, bool& isUnwatchable);
  bool setWatch(WatchedFolder& folder, int watch);
  void updateAgain(WatchedFolder& folder, const std::string& name);

  void publish(events::Kind kind, const WatchedFolder& folder, const std::string& name, events::EntryType type) const;
  bool isMuted() const noexcept { return isStarting_ || ending_.load(std::memory_order_relaxed); }
  std::string relativePath(const WatchedFolder& folder) const;
  std::string nativePathOf(const WatchedFolder& folder) const;

  Inotify& inotify_;
  const ChangePublisher publisher_;
  const std::string path_;
  const Reach reach_;
  const std::string file_;
  const std::atomic<bool>& ending_;
  const bool wantsTimes_;
  const std::uint32_t mask_;
  WatchedFolder root_;
  std::uint64_t rootTime_ = 0;
  std::vector<int> above_;  ///< the watches of the folders on the way to the watched one
  bool isStarting_ = true;
  bool isGone_ = false;
  bool isUncertain_ = false;
};

}  // namespace foundation::storage::backend::local::detail
