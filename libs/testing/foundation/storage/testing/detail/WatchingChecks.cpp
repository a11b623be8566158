#include <foundation/storage/provider/ChangeEventsNotSupportedException.h>
#include <foundation/storage/provider/ChangeEventsSubscriptionException.h>
#include <foundation/storage/testing/EventRecorder.h>
#include <foundation/storage/testing/detail/Check.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

// Watching: by looking, which every back end inherits, and by the store's own events, which mean the same.

namespace foundation::storage::testing::detail {

using events::EntryType;
using events::Kind;
using provider::RecursiveChangePolling;
using provider::RecursiveFileWatching;

namespace {

const std::vector<Kind> allKinds{Kind::WatchedFolderModified, Kind::WatchedFolderRemoved, Kind::EntryAdded,
                                 Kind::EntryModified, Kind::EntryRemoved};

enum class Range { Entries, Subtree };

/// One of the two ways to watch.
struct Polling {
  static void start(const StorageItem& folder, const EventRecorder& recorder, Range range = Range::Entries) {
    folder.startChangePollingMechanism(
        recorder.callback(), allKinds, std::chrono::milliseconds(1),
        range == Range::Entries ? RecursiveChangePolling::DirectOnly : RecursiveChangePolling::Recursive);
  }
  static void stop(const StorageItem& folder) { folder.stopChangePollingMechanism(); }
};

struct Publishing {
  static void start(const StorageItem& folder, const EventRecorder& recorder, Range range = Range::Entries) {
    folder.publishFolderEvents(
        recorder.callback(), allKinds,
        range == Range::Entries ? RecursiveFileWatching::DirectOnly : RecursiveFileWatching::Recursive);
  }
  static void stop(const StorageItem& folder) { folder.stopPublishingFolderEvents(); }
};

bool arrives(const EventRecorder& recorder, Kind kind, const StorageItem& subject, EntryType type = EntryType::File) {
  return recorder.waitFor([&](const ChangeEvent& event) {
    return event.kind == kind && event.subject == subject.getLocation() && event.type == type;
  });
}

/// What both ways have in common.
template <class Watching>
std::vector<Check> sharedChecks() {
  return {
      {"SeesWhatIsAdded",
       [](Store& s) {
         const EventRecorder recorder;
         Watching::start(s.folder(), recorder);
         put(s.item(u"a"), "1");
         s.item(u"b").createFolder();
         EXPECT_TRUE(arrives(recorder, Kind::EntryAdded, s.item(u"a")));
         EXPECT_TRUE(arrives(recorder, Kind::EntryAdded, s.item(u"b"), EntryType::Folder));
         Watching::stop(s.folder());
       }},
      {"SeesWhatIsRemoved",
       [](Store& s) {
         s.fill({{u"a", "1"}, {u"b/", ""}});
         const EventRecorder recorder;
         Watching::start(s.folder(), recorder);
         s.item(u"a").removeFile();
         s.item(u"b").removeFolder();
         EXPECT_TRUE(arrives(recorder, Kind::EntryRemoved, s.item(u"a")));
         EXPECT_TRUE(arrives(recorder, Kind::EntryRemoved, s.item(u"b"), EntryType::Folder));
         Watching::stop(s.folder());
       }},
      {"SeesAMoveAsTwoChanges",
       [](Store& s) {
         s.fill({{u"a", "1"}});
         const EventRecorder recorder;
         Watching::start(s.folder(), recorder);
         s.item(u"a").moveFile(s.item(u"100% b").getLocation(), ReplacementPolicy::NoClobber);
         EXPECT_TRUE(arrives(recorder, Kind::EntryRemoved, s.item(u"a")));
         EXPECT_TRUE(arrives(recorder, Kind::EntryAdded, s.item(u"100% b")));
         Watching::stop(s.folder());
       }},
      {"SeesWhatIsModified",
       [](Store& s) {
         s.fill({{u"a", "1"}});
         const EventRecorder recorder;
         Watching::start(s.folder(), recorder);
         s.item(u"a").setLastModified(boost::posix_time::ptime(boost::gregorian::date(2020, 1, 1)));
         EXPECT_TRUE(arrives(recorder, Kind::EntryModified, s.item(u"a")));
         Watching::stop(s.folder());
       },
       {Capability::SetLastModified}},
      {"SeesThatTheFolderIsGone",
       [](Store& s) {
         s.fill({{u"b/", ""}});
         const EventRecorder recorder;
         Watching::start(s.item(u"b"), recorder);
         s.item(u"b").removeFolder();
         EXPECT_TRUE(arrives(recorder, Kind::WatchedFolderRemoved, s.item(u"b"), EntryType::Folder));
         Watching::stop(s.item(u"b"));
       }},
      {"PublishesNothingAfterStopping",
       [](Store& s) {
         s.fill({{u"watched/", ""}, {u"stopped/", ""}});
         const EventRecorder recorder;
         Watching::start(s.item(u"watched"), recorder);
         Watching::start(s.item(u"stopped"), recorder);
         Watching::stop(s.item(u"stopped"));
         put(s.item(u"stopped/a"), "1");
         put(s.item(u"watched/a"), "1");
         EXPECT_TRUE(arrives(recorder, Kind::EntryAdded, s.item(u"watched/a")));
         for (const auto& event : recorder.take())
           EXPECT_EQ(event.watched, s.item(u"watched").getLocation());
         Watching::stop(s.item(u"watched"));
       }},
      {"StoppingWhatWasNeverStartedDoesNothing", [](Store& s) { EXPECT_NO_THROW(Watching::stop(s.folder())); }},
      {"EndsWithItsProvider",
       [](Store& s) {
         for (int round = 0; round < 10; ++round) {
           s.fill({{u"a", "1"}});
           const EventRecorder recorder;
           Watching::start(s.folder(), recorder);
           const auto added = s.item(u"b").getLocation();
           put(s.item(u"b"), "1");
           EXPECT_TRUE(recorder.waitFor([&](const ChangeEvent& event) { return event.subject == added; }));
           s.release();  // while events may still come
           recorder.take();
         }
       }},
  };
}

template <class Watching>
void seeAWholeTree(Store& s) {
  s.fill({{u"a/b/", ""}});
  const EventRecorder recorder;
  Watching::start(s.folder(), recorder, Range::Subtree);
  put(s.item(u"a/b/c"), "1");
  EXPECT_TRUE(arrives(recorder, Kind::EntryAdded, s.item(u"a/b/c")));
  s.item(u"a/new/newer").createFolderRecursive();
  put(s.item(u"a/new/newer/file"), "1");
  EXPECT_TRUE(arrives(recorder, Kind::EntryAdded, s.item(u"a/new/newer/file")));
  Watching::stop(s.folder());
}

CheckGroup withShared(CheckGroup group, std::vector<Check> shared) {
  for (auto& check : shared)
    group.checks.push_back(std::move(check));
  return group;
}

}  // namespace

CheckGroup pollingChecks() {
  return withShared({"Polling",
                     {Capability::Write},
                     {
                         {"SeesAWholeTree", seeAWholeTree<Polling>, {Capability::RecursiveListing}},
                         {"AWholeTreeIsRefused",
                          [](Store& s) {
                            const EventRecorder recorder;
                            EXPECT_TRUE(refuses(ErrorCode::UnsupportedOperation, s.folder(),
                                                [&] { Polling::start(s.folder(), recorder, Range::Subtree); }));
                          },
                          {},
                          {Capability::RecursiveListing}},
                         {"OfAMissingFolderIsRefused",
                          [](Store& s) {
                            const EventRecorder recorder;
                            EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"),
                                                [&] { Polling::start(s.item(u"a"), recorder); }));
                          }},
                     }},
                    sharedChecks<Polling>());
}

CheckGroup changeEventChecks() {
  return withShared({"ChangeEvents",
                     {Capability::Write, Capability::ChangeEvents},
                     {
                         {"SeesAWholeTree", seeAWholeTree<Publishing>},
                         {"OfOneFile",
                          [](Store& s) {
                            s.fill({{u"a", "1"}, {u"b", "2"}});
                            const EventRecorder recorder;
                            s.item(u"a").publishFileEvents(recorder.callback(), allKinds);
                            s.item(u"b").removeFile();
                            s.item(u"a").removeFile();
                            EXPECT_TRUE(arrives(recorder, Kind::EntryRemoved, s.item(u"a")));
                            put(s.item(u"a"), "new");
                            EXPECT_TRUE(arrives(recorder, Kind::EntryAdded, s.item(u"a")));
                            for (const auto& event : recorder.take())
                              EXPECT_EQ(event.subject, s.item(u"a").getLocation());
                            s.item(u"a").stopPublishingFileEvents();
                          }},
                         {"OfAMissingFolderAreRefused",
                          [](Store& s) {
                            const EventRecorder recorder;
                            EXPECT_THROW(Publishing::start(s.item(u"a"), recorder),
                                         provider::ChangeEventsSubscriptionException);
                          }},
                     }},
                    sharedChecks<Publishing>());
}

void refuseChangeEvents(Store& s) {
  const EventRecorder recorder;
  EXPECT_THROW(Publishing::start(s.folder(), recorder), provider::ChangeEventsNotSupportedException);
  EXPECT_THROW(s.item(u"a").publishFileEvents(recorder.callback(), allKinds),
               provider::ChangeEventsNotSupportedException);
  EXPECT_NO_THROW(Publishing::stop(s.folder()));
}

}  // namespace foundation::storage::testing::detail
