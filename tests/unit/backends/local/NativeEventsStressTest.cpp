// Change events when much happens at once: nothing is missed, nothing comes too late.

#include "ChangeRecorder.h"

#include <atomic>
#include <latch>
#include <map>
#include <random>
#include <thread>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

constexpr auto recursive = RecursiveFileWatching::Recursive;

using NativeEventsStressTest = NativeEventsTest;

TEST_F(NativeEventsStressTest, FollowFoldersThatAreFilledAtOnce) {
  const ChangeRecorder recorder;
  watch(recorder, watched, recursive);
  for (int i = 0; i < 200; ++i) {
    const auto top = "watched/" + std::to_string(i);
    fs::create_directories(native(top + "/b/c"));
    for (const char* file : {"/b/c/1", "/b/c/2", "/b/1", "/1"})
      make(top + file);
    if (i % 3 == 1)
      fs::remove_all(native("watched/" + std::to_string(i - 1)));
    if (i % 3 == 2)
      fs::rename(native(top), native("watched/" + std::to_string(i - 2)));
  }
  Tree tree;
  replay(eventsOf(recorder), tree);
  EXPECT_EQ(tree, treeOnDisk(watchedPath));
}

TEST_F(NativeEventsStressTest, LoseNothingWhenTheKernelDropsThem) {
  std::ifstream setting("/proc/sys/fs/inotify/max_queued_events");
  int limit = 0;
  if (!(setting >> limit) || limit > 200'000)
    GTEST_SKIP() << "the kernel's queue is too long";
  make("watched/removed");
  make("watched/kept");
  for (const char* name : {"watched/old/inner", "watched/turned/inner"})
    fs::create_directories(native(name));
  auto tree = treeOnDisk(watchedPath);
  const ChangeRecorder recorder;
  std::latch reached(1), released(1);
  std::atomic<bool> isFirst{true};
  const auto blockOnce = [&] {
    if (!isFirst.exchange(false))
      return;
    reached.count_down();
    released.wait();
  };
  const ScopedEvents subscription(watched, recorder.callback(watched.getLocation(), blockOnce), allKinds);
  make("watched/first");
  reached.wait();
  for (int i = 0; i <= limit; ++i)
    make("watched/" + std::to_string(i));
  for (int i = 0; i <= limit; i += 2)
    fs::remove(native("watched/" + std::to_string(i)));
  fs::remove(native("watched/removed"));
  fs::rename(native("watched/old"), native("watched/other"));
  fs::remove_all(native("watched/turned"));
  make("watched/turned");
  fs::create_directories(native("watched/new/inner"));
  make("watched/new/inner/file");
  setTime("watched/kept", 1000);
  released.count_down();

  auto events = eventsOf(recorder);
  EXPECT_TRUE(std::find(events.begin(), events.end(), "~f kept") != events.end());
  replay(events, tree);
  EXPECT_EQ(tree, treeOnDisk(watchedPath));

  make("watched/new/inner/later");
  replay(eventsOf(recorder), tree);
  EXPECT_EQ(tree, treeOnDisk(watchedPath));
}

/// Changes a small tree at random, and keeps a list of the paths that it touched.
class RandomChanges {
 public:
  explicit RandomChanges(std::string path) : path_(std::move(path)) {}

  void change() {
    const auto name = pick(), other = pick();
    touched_.insert(name);
    std::error_code ignored;
    switch (below(8)) {
      case 0:
      case 1:
        return make(name);
      case 2:
        return write(name);
      case 3:
        touched_.insert(other);
        return fs::rename(at(name), at(other), ignored);
      case 4:
        fs::remove_all(at(name), ignored);
        return;
      case 5:
        fs::remove_all(at(name), ignored);
        fs::create_directory(at(name), ignored);
        return;
      case 6:
        fs::create_directory(at(name), ignored);
        return;
      default:
        return setTime(name);
    }
  }

  std::set<std::string> takeTouched() { return std::exchange(touched_, {}); }

 private:
  std::size_t below(std::size_t limit) { return random_() % limit; }
  std::string at(const std::string& name) const { return path_ + "/" + name; }

  std::string pick() {
    std::string name(1, "abcd"[below(4)]);
    while (name.size() < 5 && below(2) == 0)
      name.append("/").push_back("abcd"[below(4)]);
    return name;
  }

  void make(const std::string& name) const { mknod(at(name).c_str(), S_IFREG | 0600, 0); }

  void write(const std::string& name) const {
    const int file = open(at(name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (file == -1)
      return;
    EXPECT_EQ(pwrite(file, "same", 4, 0), 4);
    close(file);
  }

  void setTime(const std::string& name) {
    const timespec time{static_cast<std::time_t>(below(1'000'000'000)), 0};
    const timespec times[] = {time, time};
    utimensat(AT_FDCWD, at(name).c_str(), times, 0);
  }

  std::string path_;
  std::mt19937 random_{20240229};
  std::set<std::string> touched_;
};

/// Last-modified times by relative paths.
std::map<std::string, fs::file_time_type> timesOnDisk(const std::string& path) {
  std::map<std::string, fs::file_time_type> times;
  for (const auto& entry : fs::recursive_directory_iterator(path))
    times[entry.path().lexically_relative(path).string()] = entry.last_write_time();
  return times;
}

/// Whether a path was touched itself, lies below one that was, or directly holds one that was.
bool isConcerned(const std::string& name, const std::set<std::string>& touched) {
  return std::any_of(touched.begin(), touched.end(), [&name](const std::string& path) {
    return (name + "/").starts_with(path + "/") || fs::path(path).parent_path() == name;
  });
}

TEST_F(NativeEventsStressTest, TellWhatTwoThousandRandomChangesDid) {
  const ChangeRecorder recorder;
  watch(recorder, watched, recursive);
  RandomChanges changes(watchedPath);
  Tree tree;
  for (int round = 0; round < 100 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    const auto before = timesOnDisk(watchedPath);
    for (int i = 0; i < 20; ++i)
      changes.change();
    const auto events = eventsOf(recorder);
    replay(events, tree);
    EXPECT_EQ(tree, treeOnDisk(watchedPath));

    std::set<std::string> told;
    for (const auto& event : events)
      if (event != "~")
        told.insert(event.substr(3));
    for (const auto& [name, time] : timesOnDisk(watchedPath))
      EXPECT_TRUE(told.contains(name) || (before.contains(name) && before.at(name) == time)) << name;
    const auto touched = changes.takeTouched();
    for (const auto& name : told)
      EXPECT_TRUE(isConcerned(name, touched)) << name;
  }
  EXPECT_TRUE(eventsOf(recorder).empty());
}

/// Makes and removes files until it is destroyed.
class Changing {
 public:
  explicit Changing(std::string path) : path_(std::move(path)), thread_([this] { run(); }) {}
  ~Changing() {
    isEnding_ = true;
    thread_.join();
  }
  Changing(const Changing&) = delete;
  Changing& operator=(const Changing&) = delete;

 private:
  void run() const {
    for (int i = 0; !isEnding_; ++i) {
      const auto folder = path_ + "/" + std::to_string(i % 10), file = folder + "/file";
      mkdir(folder.c_str(), 0700);
      mknod(file.c_str(), S_IFREG | 0600, 0);
      unlink(file.c_str());
      rmdir(folder.c_str());
    }
  }

  const std::string path_;
  std::atomic<bool> isEnding_{false};
  std::thread thread_;
};

/// Counts events, of which none may come after the end.
struct Counted {
  std::atomic<bool> hasEnded{false};
  std::atomic<int> count{0};

  static ChangeCallback callback(const std::shared_ptr<Counted>& counted) {
    return [counted](const Kind&, const StorageIRI&, const StorageIRI&, const EntryType&,
                     const boost::property_tree::ptree&) {
      EXPECT_FALSE(counted->hasEnded);
      ++counted->count;
      counted->count.notify_all();
    };
  }
};

TEST_F(NativeEventsStressTest, DoNotComeAfterTheStopOfAnyThread) {
  const Changing changing(watchedPath);
  std::vector<std::thread> threads;
  for (int number = 0; number < 8; ++number)
    threads.emplace_back([this, number] {
      // Two threads share each location, so that a stop may end the other's subscription.
      const StorageItem item(folder, number % 2 == 0 ? u"watched" : u"watched/../watched");
      for (int i = 0; i < 100; ++i) {
        const auto counted = std::make_shared<Counted>();
        item.publishFolderEvents(Counted::callback(counted), allKinds,
                                 number < 4 ? recursive : RecursiveFileWatching::DirectOnly);
        item.stopPublishingFolderEvents();
        counted->hasEnded = true;
      }
    });
  for (auto& thread : threads)
    thread.join();
}

TEST_F(NativeEventsStressTest, EndWithTheProvider) {
  const Changing changing(watchedPath);
  for (int i = 0; i < 50; ++i) {
    const auto counted = std::make_shared<Counted>();
    auto provider = LocalProviderFactory().buildProvider(location);
    provider->publishFolderEventsFor(watched.getLocation(), Counted::callback(counted), allKinds, recursive);
    counted->count.wait(0);
    provider.reset();
    counted->hasEnded = true;
  }
}

}  // namespace
}  // namespace foundation::storage::backend::local
