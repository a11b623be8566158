#include <foundation/storage/testing/EventRecorder.h>
#include <foundation/storage/testing/detail/Check.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace foundation::storage::testing::detail {

using events::EntryType;
using events::Kind;
using provider::RecursiveChangePolling;

namespace {

const std::vector<Kind> allKinds{Kind::WatchedFolderModified, Kind::WatchedFolderRemoved, Kind::EntryAdded,
                                 Kind::EntryModified, Kind::EntryRemoved};

void poll(const StorageItem& folder, const EventRecorder& recorder,
          RecursiveChangePolling recursion = RecursiveChangePolling::DirectOnly) {
  folder.startChangePollingMechanism(recorder.callback(), allKinds, std::chrono::milliseconds(1), recursion);
}

bool arrives(const EventRecorder& recorder, Kind kind, const StorageItem& subject, EntryType type = EntryType::File) {
  return recorder.waitFor([&](const ChangeEvent& event) {
    return event.kind == kind && event.subject == subject.getLocation() && event.type == type;
  });
}

}  // namespace

CheckGroup pollingChecks() {
  return {"Polling",
          {Capability::Write},
          {
              {"SeesWhatIsAdded",
               [](Store& s) {
                 const EventRecorder recorder;
                 poll(s.folder(), recorder);
                 put(s.item(u"a"), "1");
                 s.item(u"b").createFolder();
                 EXPECT_TRUE(arrives(recorder, Kind::EntryAdded, s.item(u"a")));
                 EXPECT_TRUE(arrives(recorder, Kind::EntryAdded, s.item(u"b"), EntryType::Folder));
                 s.folder().stopChangePollingMechanism();
               }},
              {"SeesWhatIsRemoved",
               [](Store& s) {
                 s.fill({{u"a", "1"}, {u"b/", ""}});
                 const EventRecorder recorder;
                 poll(s.folder(), recorder);
                 s.item(u"a").removeFile();
                 s.item(u"b").removeFolder();
                 EXPECT_TRUE(arrives(recorder, Kind::EntryRemoved, s.item(u"a")));
                 EXPECT_TRUE(arrives(recorder, Kind::EntryRemoved, s.item(u"b"), EntryType::Folder));
                 s.folder().stopChangePollingMechanism();
               }},
              {"SeesWhatIsModified",
               [](Store& s) {
                 s.fill({{u"a", "1"}});
                 const EventRecorder recorder;
                 poll(s.folder(), recorder);
                 s.item(u"a").setLastModified(boost::posix_time::ptime(boost::gregorian::date(2020, 1, 1)));
                 EXPECT_TRUE(arrives(recorder, Kind::EntryModified, s.item(u"a")));
                 s.folder().stopChangePollingMechanism();
               },
               {Capability::SetLastModified}},
              {"SeesThatTheFolderIsGone",
               [](Store& s) {
                 s.fill({{u"b/", ""}});
                 const EventRecorder recorder;
                 poll(s.item(u"b"), recorder);
                 s.item(u"b").removeFolder();
                 EXPECT_TRUE(arrives(recorder, Kind::WatchedFolderRemoved, s.item(u"b"), EntryType::Folder));
                 s.item(u"b").stopChangePollingMechanism();
               }},
              {"SeesAWholeTree",
               [](Store& s) {
                 s.fill({{u"a/b/", ""}});
                 const EventRecorder recorder;
                 poll(s.folder(), recorder, RecursiveChangePolling::Recursive);
                 put(s.item(u"a/b/c"), "1");
                 EXPECT_TRUE(arrives(recorder, Kind::EntryAdded, s.item(u"a/b/c")));
                 s.folder().stopChangePollingMechanism();
               },
               {Capability::RecursiveListing}},
              {"AWholeTreeIsRefused",
               [](Store& s) {
                 const EventRecorder recorder;
                 EXPECT_TRUE(refuses(ErrorCode::UnsupportedOperation, s.folder(),
                                     [&] { poll(s.folder(), recorder, RecursiveChangePolling::Recursive); }));
               },
               {},
               {Capability::RecursiveListing}},
              {"PublishesNothingAfterStopping",
               [](Store& s) {
                 s.fill({{u"watched/", ""}, {u"stopped/", ""}});
                 const EventRecorder recorder;
                 poll(s.item(u"watched"), recorder);
                 poll(s.item(u"stopped"), recorder);
                 s.item(u"stopped").stopChangePollingMechanism();
                 put(s.item(u"stopped/a"), "1");
                 put(s.item(u"watched/a"), "1");
                 EXPECT_TRUE(arrives(recorder, Kind::EntryAdded, s.item(u"watched/a")));
                 for (const auto& event : recorder.take())
                   EXPECT_EQ(event.watched, s.item(u"watched").getLocation());
                 s.item(u"watched").stopChangePollingMechanism();
               }},
              {"OfAMissingFolderIsRefused",
               [](Store& s) {
                 const EventRecorder recorder;
                 EXPECT_TRUE(refuses(ErrorCode::ResourceNotFound, s.item(u"a"), [&] { poll(s.item(u"a"), recorder); }));
               }},
              {"StoppingWhatWasNeverStartedDoesNothing",
               [](Store& s) { EXPECT_NO_THROW(s.folder().stopChangePollingMechanism()); }},
              {"EndsWithItsProvider",
               [](Store& s) {
                 for (int round = 0; round < 10; ++round) {
                   s.fill({{u"a", "1"}});
                   const EventRecorder recorder;
                   poll(s.folder(), recorder);
                   const auto added = s.item(u"b").getLocation();
                   put(s.item(u"b"), "1");
                   EXPECT_TRUE(recorder.waitFor([&](const ChangeEvent& event) { return event.subject == added; }));
                   s.release();  // while passes go on
                   recorder.take();
                 }
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
