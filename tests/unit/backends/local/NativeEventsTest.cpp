// Change events as the system gives them: which, and about what.

#include "ChangeRecorder.h"
#include "support/LogRecords.h"

#include <foundation/log/DiagnosticLogger.h>
#include <foundation/storage/provider/ChangeEventsSubscriptionException.h>

#include <boost/exception/diagnostic_information.hpp>

#include <cstdio>
#include <sched.h>
#include <semaphore>
#include <sys/wait.h>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;
using Events = std::vector<std::string>;

constexpr auto directOnly = RecursiveFileWatching::DirectOnly;
constexpr auto recursive = RecursiveFileWatching::Recursive;
const std::vector<Kind> comingAndGoing{Kind::EntryAdded, Kind::EntryRemoved};

/// Runs `body` in a process of its own.
/// @return its exit code
template <class Body>
int inChild(const Body& body) {
  const auto child = fork();
  if (child == 0) {
    int code = 100;
    try {
      code = body();
    } catch (const std::exception& failure) {
      std::fprintf(stderr, "%s\n", failure.what());
    }
    _exit(code);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(NativeEventsTest, TellEachChange) {
  const auto at = [this](const char* name) { return native(std::string("watched/") + name); };
  const auto rename = [&](const char* from, const char* to) { fs::rename(at(from), at(to)); };
  const std::string bytes = "\xff%#? \n:\xed\xa0\x80";
  const struct {
    const char* what;
    RecursiveFileWatching recursion;
    std::vector<Kind> kinds;
    std::function<void()> change;
    Events events;
  } cases[] = {
      {"a new file", directOnly, allKinds, [&] { make("watched/n"); }, {"~", "+f n"}},
      {"a new folder", directOnly, allKinds, [&] { fs::create_directory(at("n")); }, {"~", "+d n"}},
      {"any bytes", directOnly, allKinds, [&] { make("watched/" + bytes); }, {"~", "+f " + bytes}},
      {"a link to a folder", directOnly, allKinds, [&] { fs::create_symlink("d", at("n")); }, {"~", "+d n"}},
      {"a link to nothing", directOnly, allKinds, [&] { fs::create_symlink("x", at("n")); }, {"~", "+f n"}},
      {"a hard link", directOnly, allKinds, [&] { fs::create_hard_link(at("f"), at("n")); }, {"~", "+f n"}},
      {"written", directOnly, allKinds, [&] { overwrite("watched/f"); }, {"~f f"}},
      {"read", directOnly, allKinds, [&] { EXPECT_EQ(content("watched/f"), "12345"); }, {}},
      {"listed", directOnly, allKinds, [&] { EXPECT_FALSE(fs::is_empty(at("d"))); }, {}},
      {"another mode", directOnly, allKinds, [&] { fs::permissions(at("f"), fs::perms::owner_read); }, {}},
      {"back in time", directOnly, allKinds, [&] { setTime("watched/f", -5); }, {"~f f"}},
      {"the same time", directOnly, allKinds, [&] { setTime("watched/f", 1000); }, {}},
      {"the watched folder's time", directOnly, allKinds, [&] { setTime("watched", 77); }, {"~"}},
      {"removed", directOnly, allKinds, [&] { fs::remove(at("f")); }, {"~", "-f f"}},
      {"removed folder", directOnly, comingAndGoing, [&] { fs::remove(at("e")); }, {"-d e"}},
      {"renamed", directOnly, allKinds, [&] { rename("f", "g"); }, {"~", "-f f", "+f g"}},
      {"replaced", directOnly, allKinds, [&] { rename("h", "f"); }, {"~", "-f h", "~f f"}},
      {"moved out", directOnly, allKinds, [&] { rename("f", "../out"); }, {"~", "-f f"}},
      {"moved in", directOnly, allKinds, [&] { rename("../in", "in"); }, {"~", "+f in"}},
      {"below", directOnly, allKinds, [&] { make("watched/d/n"); }, {"~d d"}},
      {"a link's target", directOnly, allKinds, [&] { overwrite("target"); }, {"~f l"}},
      {"a link's target gone", directOnly, allKinds, [&] { fs::remove(native("target")); }, {"~f l"}},
      {"in a linked folder", directOnly, allKinds, [&] { make("linked/n"); }, {"~d ld"}},
      {"renamed folder", directOnly, allKinds, [&] { rename("d", "n"); }, {"~", "-d d", "+d n"}},
      {"below", recursive, allKinds, [&] { make("watched/d/n"); }, {"~d d", "+f d/n"}},
      {"written below", recursive, allKinds, [&] { overwrite("watched/d/in"); }, {"~f d/in"}},
      {"moved up", recursive, allKinds, [&] { rename("d/in", "n"); }, {"~d d", "-f d/in", "~", "+f n"}},
      {"renamed folder", recursive, allKinds, [&] { rename("d", "n"); }, {"~", "-f d/in", "-d d", "+d n", "+f n/in"}},
      {"moved in", recursive, comingAndGoing, [&] { rename("../linked", "n"); }, {"+d n", "+f n/far"}},
      {"in a linked folder", recursive, allKinds, [&] { make("linked/n"); }, {"~d ld"}},
      {"a tree removed", recursive, comingAndGoing, [&] { fs::remove_all(at("d")); }, {"-f d/in", "-d d"}},
      {"exchanged",
       recursive,
       comingAndGoing,
       [&] { ASSERT_EQ(renameat2(AT_FDCWD, at("d").c_str(), AT_FDCWD, at("e").c_str(), RENAME_EXCHANGE), 0); },
       {"-f d/in", "+f e/in"}},
      {"no kinds", recursive, {}, [&] { make("watched/d/n"); }, {}},
      {"one kind", directOnly, {Kind::EntryRemoved}, [&] { rename("f", "n"); }, {"-f f"}},
      {"one kind", directOnly, {Kind::EntryModified}, [&] { rename("h", "f"); }, {"~f f"}},
      {"one kind", recursive, {Kind::WatchedFolderModified}, [&] { rename("h", "f"); }, {"~"}},
  };
  for (const auto& [what, recursion, kinds, change, expected] : cases) {
    SCOPED_TRACE(std::string(what) + (recursion == recursive ? ", recursive" : ""));
    for (const char* name : {"watched/d", "watched/e", "linked"})
      fs::create_directories(native(name));
    for (const char* file : {"watched/f", "watched/h", "watched/d/in", "in", "target", "linked/far"})
      put(file, "12345");
    for (const char* name : {"watched/f", "target"})
      setTime(name, 1000);
    fs::create_symlink("../target", at("l"));
    fs::create_directory_symlink("../linked", at("ld"));
    const ChangeRecorder recorder;
    watch(recorder, watched, recursion, kinds);
    change();
    EXPECT_EQ(eventsOf(recorder), expected);
    watched.stopPublishingFolderEvents();
    for (const char* name : {"watched", "linked", "out"})
      fs::remove_all(native(name));
    awaitEarlierEvents();  // the next subscription is not to look around because of these
  }
}

TEST_F(NativeEventsTest, TellOnceThatTheWatchedFolderIsGone) {
  const auto folderPath = native("watched/folder"), away = native("watched/away");
  const StorageItem item(watched, u"folder");
  const struct {
    const char* what;
    std::function<void()> remove;
  } cases[] = {
      {"removed", [&] { fs::remove(folderPath); }},
      {"moved", [&] { fs::rename(folderPath, away); }},
      {"an ancestor moved", [&] { fs::rename(watchedPath, native("other")); }},
      {"removed and made again",
       [&] {
         fs::remove(folderPath);
         fs::create_directory(folderPath);
       }},
      {"replaced by another",
       [&] {
         fs::create_directory(away);
         fs::rename(away, folderPath);
       }},
      {"removed while it is in use",
       [&] {
         const int inUse = open(folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
         fs::remove(folderPath);
         awaitEarlierEvents();
         close(inUse);
       }},
      {"the link to it removed", [&] { fs::remove(native("link")); }},
  };
  for (const auto& [what, remove] : cases) {
    SCOPED_TRACE(what);
    fs::create_directories(folderPath);
    fs::create_directory_symlink(folderPath, native("link"));
    const bool isLink = std::string(what).starts_with("the link");
    const ChangeRecorder recorder, again;
    watch(recorder, isLink ? child(u"link") : item, recursive, {Kind::WatchedFolderRemoved, Kind::EntryAdded});
    remove();
    EXPECT_EQ(eventsOf(recorder), Events{"gone"});
    fs::create_directories(folderPath);
    make("watched/folder/new");
    EXPECT_EQ(eventsOf(recorder), Events{});

    watch(again, item, directOnly);
    make("watched/folder/newer");
    EXPECT_EQ(eventsOf(again), (Events{"~", "+f newer"}));
    item.stopPublishingFolderEvents();
    for (const char* name : {"watched", "other", "link"})
      fs::remove_all(native(name));
    awaitEarlierEvents();  // the next subscription is not to look around because of these
  }
}

TEST_F(NativeEventsTest, TellOfOneFile) {
  const StorageItem file(watched, u"file");
  const ChangeRecorder recorder;
  file.publishFileEvents(recorder.callback(file.getLocation().getParent()), allKinds);
  const auto write = [this] { overwrite("watched/file"); };
  const struct {
    std::function<void()> change;
    Events events;
  } steps[] = {
      {[&] { make("watched/other"); }, {}},
      {[&] { make("watched/file"); }, {"+f file"}},
      {write, {"~f file"}},
      {[&] { fs::rename(native("watched/other"), native("watched/file")); }, {"~f file"}},
      {write, {"~f file"}},
      {[&] { fs::remove(native("watched/file")); }, {"-f file"}},
      {[&] { make("watched/file"); }, {"+f file"}},
      {[&] { fs::rename(watchedPath, native("away")); }, {"-f file", "gone"}},
  };
  for (const auto& [change, expected] : steps) {
    change();
    EXPECT_EQ(eventsOf(recorder), expected);
  }
}

TEST_F(NativeEventsTest, ComeToEachSubscriptionUntilItIsStopped) {
  fs::create_directory(native("watched/d"));
  const StorageItem below(watched, u"d"), file(below, u"n");
  const ChangeRecorder all, direct, one, second;
  watch(all, watched, recursive, comingAndGoing);
  watch(direct, below, directOnly, comingAndGoing);
  file.publishFileEvents(one.callback(file.getLocation().getParent()), comingAndGoing);
  watch(second, below, recursive);  // the first one stays in force
  make("watched/d/n");
  EXPECT_EQ(eventsOf(all), Events{"+f d/n"});
  EXPECT_EQ(direct.take(), Events{"+f n"});
  EXPECT_EQ(one.take(), Events{"+f n"});

  watched.stopPublishingFolderEvents();
  fs::remove(native("watched/d/n"));
  EXPECT_EQ(eventsOf(direct), Events{"-f n"});
  EXPECT_EQ(one.take(), Events{"-f n"});

  file.stopPublishingFileEvents();  // which are those of its folder
  make("watched/d/n");
  EXPECT_EQ(eventsOf(direct), Events{});
  for (const auto& recorder : {all, one, second})
    EXPECT_EQ(recorder.take(), Events{});
  EXPECT_NO_THROW(StorageItem(folder, u"unknown").stopPublishingFolderEvents());
}

TEST_F(NativeEventsTest, FindAgainWhatWasAwayWhileItWasLookedFor) {
  fs::create_directory(native("watched/d"));
  make("watched/d/in");
  const ChangeRecorder recorder;
  std::binary_semaphore called(0), mayGoOn(0);
  const auto stopTwice = [&, calls = 0]() mutable {
    if (++calls > 2)
      return;
    called.release();
    mayGoOn.acquire();
  };
  const ScopedEvents events(watched, recorder.callback(watched.getLocation(), stopTwice), comingAndGoing);
  make("watched/first");
  called.acquire();
  fs::permissions(native("watched/d/in"), fs::perms::owner_read);
  fs::rename(native("watched/d"), native("d"));
  mayGoOn.release();
  called.acquire();
  fs::rename(native("d"), native("watched/d"));
  mayGoOn.release();
  EXPECT_EQ(eventsOf(recorder), (Events{"+f first", "-f d/in", "+f d/in"}));
}

TEST_F(NativeEventsTest, MakeUpForWhatCouldNotBeRead) {
  if (geteuid() != 0)
    GTEST_SKIP() << "only root can change permissions for others";
  fs::create_directory(native("watched/d"));
  fs::permissions(native("zfence"), fs::perms::all);
  const ChangeRecorder recorder;
  const WithoutPrivileges user;
  watch(recorder, watched, recursive, comingAndGoing);
  const auto changeMode = [&](mode_t mode) {
    return inChild([&] { return seteuid(0) != 0 || chmod(native("watched/d").c_str(), mode) != 0 ? 1 : 0; });
  };
  const auto makeFile = [&] {
    return inChild([&] { return seteuid(0) != 0 || mknod(native("watched/d/n").c_str(), S_IFREG, 0) != 0 ? 1 : 0; });
  };
  EXPECT_EQ(changeMode(0), 0);
  EXPECT_EQ(makeFile(), 0);
  EXPECT_EQ(eventsOf(recorder), Events{});
  EXPECT_EQ(changeMode(0755), 0);
  EXPECT_EQ(eventsOf(recorder), Events{"+f d/n"});
}

TEST_F(NativeEventsTest, GoOnAfterACallbackHasThrown) {
  const log::test::LogRecords records;
  log::openChannel("foundation::storage::provider", log::Level::detail);
  const ChangeRecorder recorder;
  int calls = 0;
  const auto failOnce = [&calls] {
    if (++calls == 1)
      throw std::runtime_error("not today");
  };
  const ScopedEvents events(watched, recorder.callback(watched.getLocation(), failOnce), comingAndGoing);
  make("watched/a");
  make("watched/b");
  EXPECT_EQ(eventsOf(recorder), Events{"+f b"});
  log::closeChannel("foundation::storage::provider");
  const std::vector<log::test::Record> expected{
      {"foundation::storage::provider", 0x200, "Error in checking for changes."},
      {"foundation::storage::provider", 0x10, "Exception caught: not today"}};
  EXPECT_EQ(records.all(), expected);
}

/// What a refused subscription says; empty where it was not refused.
template <class Action>
std::string refusalAt(const StorageItem& item, const Action& subscribe) {
  try {
    subscribe();
  } catch (const ChangeEventsSubscriptionException& failure) {
    EXPECT_EQ(failure.getStorageIRI(), item.getLocation());
    return boost::diagnostic_information(failure);
  }
  return {};
}

std::string refusalOf(const StorageItem& item, RecursiveFileWatching recursion) {
  return refusalAt(
      item, [&] { item.publishFolderEvents(ChangeRecorder().callback(item.getLocation()), allKinds, recursion); });
}

TEST_F(NativeEventsTest, AreRefusedWhereNothingCanBeWatched) {
  make("file");
  const auto refusesFile = [](const StorageItem& item) {
    return refusalAt(item, [&] { item.publishFileEvents(ChangeRecorder().callback(item.getLocation()), allKinds); });
  };
  EXPECT_NE(refusalOf(child(u"missing"), recursive).find("No such file"), std::string::npos);
  EXPECT_NE(refusalOf(child(u"file"), directOnly).find("Not a directory"), std::string::npos);
  EXPECT_NE(refusesFile(child(u"missing/file")).find("No such file"), std::string::npos);
  EXPECT_NE(refusesFile(watched).find("Is a directory"), std::string::npos);
  EXPECT_NE(refusalOf(child(std::u16string(1, u'\0')), directOnly).find("NUL"), std::string::npos);
}

constexpr int notOffered = 77;

/// Limits what this process may have of inotify(7), and nobody else.
/// @return false where the system does not offer that
bool limitTo(const std::string& what, int most) {
  if (unshare(CLONE_NEWUSER) != 0)
    return false;
  std::ofstream limit("/proc/sys/user/" + what);
  return (limit << most << std::flush).good();
}

class NativeEventLimitsTest : public LocalTest {
 protected:
  /// Whether a refusal and the one record of the log name a setting.
  static bool names(const std::string& setting, const std::string& refusal, const log::test::LogRecords& records) {
    const auto all = records.all();
    return refusal.find(setting) != std::string::npos && all.size() == 1 && all[0].severity == 0x200 &&
           all[0].message.find(setting) != std::string::npos;
  }
};

TEST_F(NativeEventLimitsTest, OfWatchesAreNamedAndLeaveNoneBehind) {
  constexpr int most = 10;
  for (int i = 0; i < most; ++i)
    fs::create_directory(native(std::to_string(i)));
  const int code = inChild([this] {
    if (!limitTo("max_inotify_watches", most))
      return notOffered;
    const log::test::LogRecords records;
    log::openChannel("foundation::storage::provider", log::Level::detail);
    if (!names("fs.inotify.max_user_watches", refusalOf(folder, recursive), records))
      return 1;
    return refusalOf(child(u"0"), directOnly).empty() ? 0 : 2;
  });
  if (code == notOffered)
    GTEST_SKIP() << "no user namespaces here";
  EXPECT_EQ(code, 0);
}

TEST_F(NativeEventLimitsTest, OfWatchesCostLaterFoldersNoMoreThanTheirOwnEvents) {
  constexpr int most = 10;
  const int code = inChild([this] {
    if (!limitTo("max_inotify_watches", most))
      return notOffered;
    const log::test::LogRecords records;
    log::openChannel("foundation::storage::provider", log::Level::detail);
    const ChangeRecorder recorder;
    folder.publishFolderEvents(recorder.callback(location), comingAndGoing, recursive);
    for (int i = 0; i < most; ++i) {
      fs::create_directories(native("aside/b"));
      fs::rename(native("aside"), native(std::to_string(i)));
    }
    for (int i = 0; i < most; ++i)
      recorder.await("+d " + std::to_string(i) + "/b");
    const auto all = records.all();
    return !all.empty() && all[0].message.find("fs.inotify.max_user_watches") != std::string::npos ? 0 : 1;
  });
  if (code == notOffered)
    GTEST_SKIP() << "no user namespaces here";
  EXPECT_EQ(code, 0);
}

TEST_F(NativeEventLimitsTest, OfInstancesAreNamed) {
  const int code = inChild([this] {
    if (!limitTo("max_inotify_instances", 0))
      return notOffered;
    const log::test::LogRecords records;
    log::openChannel("foundation::storage::provider", log::Level::detail);
    return names("fs.inotify.max_user_instances", refusalOf(folder, recursive), records) ? 0 : 1;
  });
  if (code == notOffered)
    GTEST_SKIP() << "no user namespaces here";
  EXPECT_EQ(code, 0);
}

}  // namespace
}  // namespace foundation::storage::backend::local
