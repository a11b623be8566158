// Watching by looking: the thread, and what every provider inherits of it.

#include "support/LogRecords.h"
#include <foundation/log/DiagnosticLogger.h>
#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/backend/support/EntryList.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/provider/events/PollingChangeEventsDetector.h>
#include <foundation/storage/testing/EventRecorder.h>
#include <foundation/storage/testing/FaultyProvider.h>
#include <foundation/storage/testing/Together.h>

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <semaphore>

namespace foundation::storage::testing {
namespace {

using namespace provider;
using events::Kind;
using std::chrono::milliseconds;

constexpr auto direct = RecursiveChangePolling::DirectOnly;
const std::vector<Kind> added{Kind::EntryAdded};

std::unique_ptr<IFolderEntryIterator> emptyListing(const StorageIRI&) {
  return std::make_unique<backend::support::EntryList>([] { return backend::support::EntryList::Entries(); });
}

/// Detectors over folders that tests list themselves.
class DetectorTest : public ::testing::Test {
 protected:
  static void add(PollingChangeEventsDetector& detector, const char16_t* folder, ListFolder list) {
    detector.addFolderLocation(StorageIRI(folder), std::move(list), nullptr, nullptr, added, direct);
  }

  const EventRecorder recorder_;
};

TEST_F(DetectorTest, EndsThoughItsPeriodIsLong) {
  for (const auto period : {milliseconds(0), milliseconds(-5), milliseconds::max(), milliseconds::min()})
    PollingChangeEventsDetector(recorder_.callback(), period);
  PollingChangeEventsDetector detector(recorder_.callback(), std::chrono::hours(1));
  add(detector, u"s:///a", emptyListing);
}

TEST_F(DetectorTest, GoesOnWithTheOthersWhereOneFails) {
  const log::test::LogRecords records;
  log::openChannel("foundation::storage::provider", log::Level::detail);
  {
    std::counting_semaphore<> passes(0);
    std::atomic<bool> fails = false;
    PollingChangeEventsDetector detector(recorder_.callback(), milliseconds(1));
    add(detector, u"s:///a", [&](const StorageIRI& folder) {
      if (fails)
        throw std::runtime_error("no exception of the library's");
      return emptyListing(folder);
    });
    add(detector, u"s:///b", [&](const StorageIRI& folder) {
      passes.release();
      return emptyListing(folder);
    });
    fails = true;
    for (int pass = 0; pass < 5; ++pass)
      passes.acquire();
  }
  log::closeChannel("foundation::storage::provider");
  const auto all = records.all();
  ASSERT_GE(all.size(), 4u);
  EXPECT_EQ(all[0], (log::test::Record{"foundation::storage::provider", 0x200, "Error in checking for changes."}));
  EXPECT_EQ(all[1].severity, 0x10u);
  EXPECT_TRUE(all[1].message.starts_with("Exception caught: ")) << all[1].message;
  EXPECT_NE(all[1].message.find("no exception of the library's"), std::string::npos);
}

TEST_F(DetectorTest, KeepsTheFirstRegistrationAndNoneThatFailed) {
  PollingChangeEventsDetector detector(recorder_.callback(), std::chrono::hours(1));
  const auto refuse = [](const StorageIRI& folder) -> std::unique_ptr<IFolderEntryIterator> {
    throw Exception(ErrorCode::ResourceNotFound, folder);
  };
  EXPECT_THROW(add(detector, u"s:///a", refuse), Exception);
  add(detector, u"s:///a", emptyListing);
  EXPECT_NO_THROW(add(detector, u"s:///a", refuse)) << "it is watched already";
  detector.removeFolderAtLocation(StorageIRI(u"s:///unknown"));
  detector.removeFolderAtLocation(StorageIRI(u"s:///a"));
  EXPECT_THROW(add(detector, u"s:///a", refuse), Exception);
}

TEST_F(DetectorTest, RemovesAFolderOnlyBetweenPasses) {
  std::latch reached(1), released(1);
  std::atomic<int> calls = 0;
  PollingChangeEventsDetector detector(recorder_.callback(), milliseconds(1));
  add(detector, u"s:///a", [&](const StorageIRI& folder) {
    if (++calls == 2) {
      reached.count_down();
      released.wait();
    }
    return emptyListing(folder);
  });
  reached.wait();
  std::thread remover([&] {
    detector.removeFolderAtLocation(StorageIRI(u"s:///a"));
    EXPECT_TRUE(released.try_wait()) << "a pass was under way";
  });
  released.count_down();
  remover.join();
  const int after = calls;
  std::counting_semaphore<> passes(0);
  add(detector, u"s:///b", [&](const StorageIRI& folder) {
    passes.release();
    return emptyListing(folder);
  });
  for (int pass = 0; pass < 3; ++pass)
    passes.acquire();
  EXPECT_EQ(calls, after) << "it was looked at again";
}

TEST_F(DetectorTest, StartsAndStopsAsOftenAsYouLike) {
  for (int round = 0; round < 10'000; ++round) {
    PollingChangeEventsDetector detector(recorder_.callback(), milliseconds(1));
    add(detector, u"s:///a", emptyListing);
  }
}

class PollingTest : public ::testing::Test {
 protected:
  const StorageIRI root_{u"memory:///"};
  const std::shared_ptr<Faults> faults_ = std::make_shared<Faults>();
  const StorageItem folder_{
      std::make_shared<FaultyProvider>(backend::memory::MemoryProviderFactory().buildProvider(root_), faults_), root_};
};

TEST_F(PollingTest, ReportsEverythingToTheFirstCallback) {
  const StorageItem a(folder_, u"a"), b(folder_, u"b");
  a.createFolder();
  b.createFolder();
  const EventRecorder first, second;
  a.startChangePollingMechanism(first.callback(), added, milliseconds(1), direct);
  b.startChangePollingMechanism(second.callback(), added, std::chrono::hours(1), direct);
  const StorageItem file(b, u"file");
  file.createFile();
  EXPECT_TRUE(first.waitFor([&](const ChangeEvent& event) { return event.subject == file.getLocation(); }));
  EXPECT_TRUE(second.take().empty());
}

TEST_F(PollingTest, GoesOnAfterPassesThatFailed) {
  const EventRecorder recorder;
  folder_.startChangePollingMechanism(recorder.callback(), added, milliseconds(1), direct);
  faults_->fail(Operation::List, Faults::every, ErrorCode::IOError);
  while (faults_->countFailures() < 3)
    std::this_thread::yield();
  faults_->clear();
  const StorageItem file(folder_, u"file");
  file.createFile();
  EXPECT_TRUE(recorder.waitFor([&](const ChangeEvent& event) { return event.subject == file.getLocation(); }));
}

TEST_F(PollingTest, WatchesNothingWhereTheFirstLookFails) {
  faults_->fail(Operation::List, 1, ErrorCode::IOError);
  const EventRecorder recorder;
  const auto start = [&] { folder_.startChangePollingMechanism(recorder.callback(), added, milliseconds(1), direct); };
  EXPECT_THROW(start(), Exception);
  EXPECT_NO_THROW(start());
}

TEST_F(PollingTest, TakesFoldersInAndOutWhilePassesRun) {
  for (int number = 0; number < 8; ++number)
    StorageItem(folder_, std::u16string(1, static_cast<char16_t>(u'a' + number))).createFolder();
  const EventRecorder recorder;
  together(8, [&](std::size_t number) {
    const StorageItem mine(folder_, std::u16string(1, static_cast<char16_t>(u'a' + number)));
    const StorageItem file(mine, u"file");
    for (int round = 0; round < 100; ++round) {
      mine.startChangePollingMechanism(recorder.callback(), added, milliseconds(1), direct);
      file.createFile();
      mine.stopChangePollingMechanism();
      file.removeFile();
    }
  });
  recorder.take();
  const StorageItem last(folder_, u"a/last");
  StorageItem(folder_, u"a").startChangePollingMechanism(recorder.callback(), added, milliseconds(1), direct);
  last.createFile();
  EXPECT_TRUE(recorder.waitFor([&](const ChangeEvent& event) { return event.subject == last.getLocation(); }));
}

}  // namespace
}  // namespace foundation::storage::testing
