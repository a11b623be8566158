#pragma once

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>
#include <foundation/storage/backend/local/detail/posix/FairMutex.h>
#include <foundation/storage/backend/local/detail/posix/Inotify.h>
#include <foundation/storage/backend/local/detail/posix/WatchedTree.h>
#include <foundation/storage/provider/ChangeCallback.h>

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

struct inotify_event;

namespace foundation::storage::backend::local::detail {

/// The native change events of one provider: its subscriptions, one inotify instance and one thread, both made for
/// the first subscription.
///
/// Any number of threads may subscribe and stop at the same time. Callbacks run on the thread of this object, one at
/// a time. They must not subscribe, stop or end anything here: that would wait for the callback itself.
class ChangeWatcher {
 public:
  using Kinds = std::vector<events::Kind>;

  ChangeWatcher() = default;
  ~ChangeWatcher() { end(); }
  ChangeWatcher(const ChangeWatcher&) = delete;
  ChangeWatcher& operator=(const ChangeWatcher&) = delete;

  /// Publishes the changes of a folder from now on. A second subscription of a folder is dropped: the first one
  /// stays in force. Throws `ChangeEventsSubscriptionException`, with everything as before.
  void watchFolder(const provider::StorageIRI& folder, const provider::ChangeCallback& callback, const Kinds& kinds,
                   provider::RecursiveFileWatching recursion);

  /// The same for one file in a folder that exists, whether the file does or not.
  void watchFile(const provider::StorageIRI& file, const provider::ChangeCallback& callback, const Kinds& kinds);

  /// Ends the subscription of a folder and those of files in it. When it returns, no callback of theirs runs or will.
  void stop(const provider::StorageIRI& folder);

  /// Ends everything, waiting for a running callback. Not while other threads subscribe or stop.
  void end() noexcept;

 private:
  /// The watched folder's path, and the file's name or nothing.
  using Key = std::pair<std::string, std::string>;
  /// What was looked at since events were last read, by watch, name (none for the folder itself) and depth: another
  /// event that was read with them says nothing new.
  using Looked = std::set<std::tuple<int, std::string_view, Depth>>;

  struct Hints {
    bool isPlace;
    bool isTime;
    bool isEntry;
    Depth depth;
  };

  void subscribe(Key key, Reach reach, ChangePublisher publisher);
  void start(const provider::StorageIRI& location);

  void run() noexcept;
  void awaitEvents();
  void handleEvents();
  void handle(const inotify_event& event, Looked& looked);
  void handle(const inotify_event& event, const WatchUser& user, const Hints& hints);
  enum class Which { All, Uncertain };
  void checkTrees(Which which);
  void doubtAll();
  void leaveGone();

  // The only lock here. It is held while a callback runs, so whatever a callback locks comes after it; who subscribes,
  // stops or ends must hold nothing that a callback waits for.
  FairMutex mutex_;                 ///< guards the next two
  std::optional<Inotify> inotify_;  ///< outlives the trees
  std::map<Key, std::unique_ptr<WatchedTree>> trees_;

  std::atomic<bool> ending_{false};
  Descriptor wakeUp_;
  std::vector<char> buffer_;    ///< the thread's alone
  bool mustLookAgain_ = false;  ///< likewise: a look has failed, and is made again before long
  std::thread thread_;
};

}  // namespace foundation::storage::backend::local::detail
