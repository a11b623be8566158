#pragma once

#include "TemporaryFolder.h"

#include <boost/property_tree/ptree.hpp>

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace foundation::storage::backend::local {

using events::EntryType;
using events::Kind;

inline const std::vector<Kind> allKinds{Kind::WatchedFolderModified, Kind::WatchedFolderRemoved, Kind::EntryAdded,
                                        Kind::EntryModified, Kind::EntryRemoved};

/// Keeps the events of one subscription as short texts: '+', '~' or '-', 'f' or 'd', a blank and the path for an
/// entry; "~" and "gone" for the watched folder.
class ChangeRecorder {
 public:
  /// To be given to the subscription.
  /// @param before  called in front of each event
  ChangeCallback callback(
      const StorageIRI& expected, std::function<void()> before = [] {}) const {
    return [state = state_, expected, before](const Kind& kind, const StorageIRI& watched, const StorageIRI& subject,
                                              const EntryType& type, const boost::property_tree::ptree& details) {
      before();
      EXPECT_EQ(watched.toString(), expected.toString());
      EXPECT_TRUE(details.empty());
      const std::scoped_lock lock(state->mutex);
      state->events.push_back(textOf(kind, watched, subject, type));
      state->changed.notify_all();
    };
  }

  /// What came since it was last asked for.
  std::vector<std::string> take() const {
    const std::scoped_lock lock(state_->mutex);
    return std::exchange(state_->events, {});
  }

  void await(const std::string& event) const {
    std::unique_lock lock(state_->mutex);
    const auto& events = state_->events;
    state_->changed.wait(lock, [&] { return std::find(events.begin(), events.end(), event) != events.end(); });
  }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> events;
  };

  static std::string textOf(Kind kind, const StorageIRI& watched, const StorageIRI& subject, EntryType type) {
    if (kind == Kind::WatchedFolderModified || kind == Kind::WatchedFolderRemoved) {
      EXPECT_EQ(subject, watched);
      EXPECT_EQ(type, EntryType::Folder);
      return kind == Kind::WatchedFolderModified ? "~" : "gone";
    }
    const auto below = watched.getPath().size() + (watched.getPath().ends_with(u'/') ? 0 : 1);
    const auto name = subject.getPath().substr(below);
    EXPECT_EQ(subject, StorageIRI(watched, name));
    const std::string sign(1, kind == Kind::EntryAdded ? '+' : kind == Kind::EntryModified ? '~' : '-');
    return sign + (type == EntryType::File ? "f " : "d ") + fl::i18n::to_string(name);
  }

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

/// A subscription whose callback refers to what lives in the same scope.
class ScopedEvents {
 public:
  ScopedEvents(StorageItem item, const ChangeCallback& callback, const std::vector<Kind>& kinds)
      : item_(std::move(item)) {
    item_.publishFolderEvents(callback, kinds, RecursiveFileWatching::Recursive);
  }
  ~ScopedEvents() { item_.stopPublishingFolderEvents(); }
  ScopedEvents(const ScopedEvents&) = delete;
  ScopedEvents& operator=(const ScopedEvents&) = delete;

 private:
  const StorageItem item_;
};

/// The entries of a folder, by paths relative to it. Without their types: an entry that another one with the same
/// last-modified time has replaced is no change.
using Tree = std::set<std::string>;

/// Replays events.
inline void replay(const std::vector<std::string>& events, Tree& tree) {
  for (const auto& event : events) {
    if (event == "~")
      continue;
    ASSERT_GT(event.size(), 3u) << event;
    const auto name = event.substr(3);
    EXPECT_EQ(tree.contains(name), event[0] != '+') << event;
    if (event[0] == '-')
      tree.erase(name);
    else
      tree.insert(name);
  }
}

inline Tree treeOnDisk(const std::string& path) {
  Tree tree;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
    tree.insert(entry.path().lexically_relative(path).string());
  return tree;
}

/// Tests with a folder to watch, and a second one whose events tell that all earlier events have come.
class NativeEventsTest : public LocalTest {
 protected:
  NativeEventsTest() {
    std::filesystem::create_directory(native("watched"));
    std::filesystem::create_directory(native("zfence"));
    child(u"zfence").publishFolderEvents(fences_.callback(child(u"zfence").getLocation()), {Kind::EntryAdded},
                                         RecursiveFileWatching::DirectOnly);
  }
  ~NativeEventsTest() override { child(u"zfence").stopPublishingFolderEvents(); }

  void watch(const ChangeRecorder& recorder, const StorageItem& item, RecursiveFileWatching recursion,
             const std::vector<Kind>& kinds = allKinds) const {
    item.publishFolderEvents(recorder.callback(item.getLocation()), kinds, recursion);
  }

  /// Waits until the events of all that has happened have come.
  void awaitEarlierEvents() {
    const auto name = std::to_string(++count_);
    make("zfence/" + name);
    fences_.await("+f " + name);
  }

  std::vector<std::string> eventsOf(const ChangeRecorder& recorder) {
    awaitEarlierEvents();
    return recorder.take();
  }

  /// Makes an empty file with a single change of its folder.
  void make(const std::string& name) const { ASSERT_EQ(mknod(native(name).c_str(), S_IFREG | 0600, 0), 0) << name; }

  void setTime(const std::string& name, std::time_t seconds) const {
    const timespec times[] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, native(name).c_str(), times, 0), 0) << name;
  }

  /// Overwrites the beginning of a file.
  void overwrite(const std::string& name) const {
    const int file = open(native(name).c_str(), O_WRONLY | O_CLOEXEC);
    if (file == -1)
      return;
    EXPECT_EQ(pwrite(file, "once", 4, 0), 4);
    EXPECT_EQ(close(file), 0);
  }

  const std::string watchedPath = native("watched");
  const StorageItem watched = child(u"watched");

 private:
  ChangeRecorder fences_;
  int count_ = 0;
};

}  // namespace foundation::storage::backend::local
