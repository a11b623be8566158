#include "support/LogRecords.h"
#include <fl/i18n/Convert.h>
#include <foundation/log/DiagnosticLogger.h>
#include <foundation/storage/backend/support/EntryList.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/events/SingleFolderChangePoller.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/property_tree/ptree.hpp>
#include <gtest/gtest.h>

#include <functional>
#include <optional>

namespace foundation::storage::provider {
namespace {

using boost::posix_time::ptime;
using events::EntryType;
using events::Kind;
using Log = std::vector<std::string>;
using Kinds = std::vector<Kind>;

const Kinds allKinds{Kind::WatchedFolderModified, Kind::WatchedFolderRemoved, Kind::EntryAdded, Kind::EntryModified,
                     Kind::EntryRemoved};
const char* const kindNames[] = {"FolderModified", "FolderRemoved", "Added", "Modified", "Removed"};

ptime at(int second) { return {boost::gregorian::date(2024, 1, 1), boost::posix_time::seconds(second)}; }

struct Entry {
  std::string name;
  int second = 0;
  EntryType type = EntryType::File;
};

/// A folder that a test sets up between polls, and a log of what the poller asks and publishes.
class ChangePollerTest : public ::testing::Test {
 protected:
  SingleFolderChangePoller makePoller(const Kinds& kinds,
                                      RecursiveChangePolling recursion = RecursiveChangePolling::DirectOnly) {
    return SingleFolderChangePoller(
        folder_, [this](const auto&... event) { publish(event...); },
        [this](const StorageIRI& folder) { return list(folder); },
        [this](const StorageIRI& file) { return fetchFile(file); },
        [this](const StorageIRI& folder) { return fetchFolder(folder); }, kinds, recursion);
  }
  /// What one check asks and publishes.
  Log check(const SingleFolderChangePoller& poller) {
    log_.clear();
    poller.checkForChanges();
    return log_;
  }
  /// Only what it publishes.
  Log events(const SingleFolderChangePoller& poller) {
    auto log = check(poller);
    std::erase_if(log, [](const auto& line) { return line == "list" || line.starts_with("fetch"); });
    return log;
  }

  std::vector<Entry> entries_;
  int ownSecond_ = 0;
  bool listsAttributes_ = true;
  std::function<void(const std::string& step)> before_ = [](const std::string&) {};
  Log log_;
  const StorageIRI folder_{u"s:///d"};

 private:
  void note(const std::string& step) {
    log_.push_back(step);
    before_(step);
  }
  void publish(const Kind& kind, const StorageIRI& watched, const StorageIRI& subject, const EntryType& type,
               const boost::property_tree::ptree& details) {
    EXPECT_EQ(watched, folder_);
    EXPECT_TRUE(details.empty() && details.data().empty());
    note(std::string(kindNames[static_cast<int>(kind)]) + " " + fl::i18n::to_string(subject.toString().substr(4)) +
         (type == EntryType::Folder ? "/" : ""));
  }
  std::unique_ptr<IFolderEntryIterator> list(const StorageIRI& folder) {
    EXPECT_EQ(folder, folder_);
    note("list");
    std::vector<FolderEntry> listed;
    for (const auto& [name, second, type] : entries_)
      listed.push_back(describe(fl::i18n::to_ustring(name), second, type));
    return std::make_unique<backend::support::EntryList>([listed] { return listed; });
  }
  FolderEntry describe(const std::u16string& name, int second, EntryType type) const {
    if (!listsAttributes_)
      return {name, type == EntryType::File ? FolderEntry::EntryType::File : FolderEntry::EntryType::Folder};
    return type == EntryType::File ? FolderEntry(name, FileAttributes(0, at(second), true))
                                   : FolderEntry(name, FolderAttributes(at(second), true));
  }
  const Entry& find(const StorageIRI& location) const {
    for (const auto& entry : entries_)
      if (StorageIRI(folder_, fl::i18n::to_ustring(entry.name)) == location)
        return entry;
    throw Exception(ErrorCode::ResourceNotFound, location);
  }
  FileAttributes fetchFile(const StorageIRI& file) {
    note("fetch " + fl::i18n::to_string(file.getName()));
    return {0, at(find(file).second), true};
  }
  FolderAttributes fetchFolder(const StorageIRI& folder) {
    note("fetch " + fl::i18n::to_string(folder.getName()) + "/");
    return {at(folder == folder_ ? ownSecond_ : find(folder).second), true};
  }
};

TEST_F(ChangePollerTest, PublishesEachDifferenceOnceInOrder) {
  entries_ = {{"b", 1}, {"gone2", 1}, {"a", 1}, {"gone1", 1, EntryType::Folder}, {"sub", 1, EntryType::Folder}};
  auto poller = makePoller(allKinds);
  poller.buildInitialSnapshot();
  EXPECT_EQ(check(poller), (Log{"fetch d/", "list"}));
  ownSecond_ = 1;
  entries_ = {{"new", 5, EntryType::Folder}, {"a", 2}, {"b", 1}, {"sub", 0, EntryType::Folder}, {"c d%", 1}};
  EXPECT_EQ(events(poller), (Log{"FolderModified /d/", "Added /d/new/", "Modified /d/a", "Modified /d/sub/",
                                 "Added /d/c%20d%25", "Removed /d/gone1/", "Removed /d/gone2"}));
  EXPECT_EQ(events(poller), Log{});
  entries_ = {{"sub", 0, EntryType::Folder}, {"c d%", 1}, {"b", 1}, {"a", 2}, {"new", 5, EntryType::Folder}};
  EXPECT_EQ(events(poller), Log{}) << "another order is no change";
  entries_ = {};
  EXPECT_EQ(events(poller).size(), 5u);
  EXPECT_EQ(events(poller), Log{});
}

TEST_F(ChangePollerTest, ComparesTimesOnly) {
  entries_ = {{"a", 5}, {"unknown", 0}};
  auto poller = makePoller(allKinds);
  poller.buildInitialSnapshot();
  entries_[0].type = EntryType::Folder;
  EXPECT_EQ(events(poller), Log{}) << "a file replaced by a folder of the same time";
  entries_[0].second = 4;
  EXPECT_EQ(events(poller), Log{"Modified /d/a/"}) << "a touch back in time";
}

TEST_F(ChangePollerTest, DoesOnlyTheWorkThatSomebodyWants) {
  entries_ = {{"a", 1}};
  listsAttributes_ = false;
  using enum RecursiveChangePolling;
  const struct {
    Kinds kinds;
    RecursiveChangePolling recursion;
    Log building, checking;
  } cases[] = {
      {{}, DirectOnly, {}, {}},
      {{Kind::WatchedFolderModified}, DirectOnly, {"fetch d/"}, {"fetch d/"}},
      {{Kind::WatchedFolderRemoved}, DirectOnly, {}, {}},
      {{Kind::EntryAdded}, DirectOnly, {"list"}, {"list"}},
      {{Kind::EntryRemoved}, Recursive, {"list"}, {"list"}},
      {{Kind::EntryModified}, DirectOnly, {"list", "fetch a"}, {"list", "fetch a"}},
      // The folder's own time says that nothing came or went.
      {{Kind::WatchedFolderModified, Kind::EntryAdded}, DirectOnly, {"fetch d/", "list"}, {"fetch d/"}},
      {{Kind::WatchedFolderModified, Kind::EntryRemoved}, DirectOnly, {"fetch d/", "list"}, {"fetch d/"}},
      {{Kind::WatchedFolderModified, Kind::EntryAdded}, Recursive, {"fetch d/", "list"}, {"fetch d/", "list"}},
      {allKinds, DirectOnly, {"fetch d/", "list", "fetch a"}, {"fetch d/", "list", "fetch a"}},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(&row - cases);
    auto poller = makePoller(row.kinds, row.recursion);
    log_.clear();
    poller.buildInitialSnapshot();
    EXPECT_EQ(log_, row.building);
    EXPECT_EQ(check(poller), row.checking);
  }
}

TEST_F(ChangePollerTest, PublishesOnlyTheKindsAskedFor) {
  for (std::size_t kind = 0; kind < allKinds.size(); ++kind) {
    ownSecond_ = 0;
    entries_ = {{"changed", 1}, {"gone", 1}};
    auto poller = makePoller({allKinds[kind]});
    poller.buildInitialSnapshot();
    ownSecond_ = 1;
    entries_ = {{"changed", 2}, {"new", 1}};
    const Log expected[] = {{"FolderModified /d/"}, {}, {"Added /d/new"}, {"Modified /d/changed"}, {"Removed /d/gone"}};
    EXPECT_EQ(events(poller), expected[kind]);
  }
}

TEST_F(ChangePollerTest, CountsTheFirstOfSeveralEntriesWithOneName) {
  entries_ = {{"a", 1}, {"a", 2}};
  auto poller = makePoller(allKinds);
  poller.buildInitialSnapshot();
  EXPECT_EQ(events(poller), Log{"Added /d/a"}) << "the second is not what is known any more";
  entries_ = {{"n", 1}, {"n", 2}};
  EXPECT_EQ(events(poller), (Log{"Added /d/n", "Added /d/n", "Removed /d/a"}));
  entries_ = {};
  EXPECT_EQ(events(poller), Log{"Removed /d/n"}) << "once";
}

TEST_F(ChangePollerTest, FallsSilentWhenTheFolderIsGone) {
  for (const auto* failing : {"list", "fetch d/"}) {
    entries_ = {{"a", 1}};
    before_ = [](const auto&) {};
    auto poller = makePoller(allKinds);
    poller.buildInitialSnapshot();
    before_ = [this, failing](const std::string& step) {
      if (step == failing)
        throw Exception(ErrorCode::ResourceNotFound, folder_);
    };
    EXPECT_EQ(events(poller), Log{"FolderRemoved /d/"});
    before_ = [](const auto&) {};
    ++ownSecond_;
    entries_ = {};
    EXPECT_EQ(check(poller), Log{}) << "even if it comes back";
  }
}

/// What the log holds after a check in which a step fails that way.
class ChangePollerLog : public ChangePollerTest {
 protected:
  std::vector<log::test::Record> recordsOf(const SingleFolderChangePoller& poller, log::Level least) {
    const log::test::LogRecords records;
    log::openChannel(channel_, least);
    poller.checkForChanges();
    log::closeChannel(channel_);
    return records.all();
  }
  void failListing(ErrorCode code) {
    before_ = [this, code](const std::string& step) {
      if (step == "list")
        throw Exception(code, folder_);
    };
  }

  const std::string channel_ = "foundation::storage::provider";
};

TEST_F(ChangePollerLog, TellsOfFailuresOnlyWhatTheChannelLetsThrough) {
  using Records = std::vector<log::test::Record>;
  auto poller = makePoller(allKinds);
  poller.buildInitialSnapshot();
  failListing(ErrorCode::PermissionDenied);
  const log::test::Record first{channel_, 0x200, "Error during change detection"};
  EXPECT_EQ(recordsOf(poller, log::Level::error), Records{first});
  const auto both = recordsOf(poller, log::Level::detail);
  ASSERT_EQ(both.size(), 2u);
  EXPECT_EQ(both[0], first);
  EXPECT_EQ(both[1].severity, 0x10u);
  const std::string cause = Exception(ErrorCode::PermissionDenied, folder_).what();
  EXPECT_TRUE(both[1].message.starts_with("Exception caught: ")) << both[1].message;
  EXPECT_NE(both[1].message.find(cause), std::string::npos) << both[1].message;

  auto careless = makePoller({Kind::EntryAdded});
  failListing(ErrorCode::ResourceNotFound);
  EXPECT_EQ(recordsOf(careless, log::Level::detail), Records{}) << "nobody wants to know that the folder is gone";
}

TEST_F(ChangePollerTest, ReportsRatherTooMuchAfterAFailure) {
  entries_ = {{"a", 1}, {"b", 1}, {"c", 1}};
  auto poller = makePoller(allKinds);
  poller.buildInitialSnapshot();
  listsAttributes_ = false;
  before_ = [this](const std::string& step) {
    if (step == "fetch b")
      throw Exception(ErrorCode::IOError, folder_);
  };
  EXPECT_EQ(events(poller), Log{});
  before_ = [](const auto&) {};
  entries_ = {{"a", 1}, {"b", 2}};
  EXPECT_EQ(events(poller), (Log{"FolderModified /d/", "Added /d/a", "Modified /d/b", "Removed /d/c"}));
  EXPECT_EQ(events(poller), Log{});
}

TEST_F(ChangePollerTest, RepeatsWhatACallbackDidNotTake) {
  entries_ = {{"a", 1}, {"b", 1}};
  auto poller = makePoller({Kind::EntryModified, Kind::EntryRemoved});
  poller.buildInitialSnapshot();
  entries_ = {{"a", 2}};
  for (const auto* refused : {"Modified /d/a", "Removed /d/b"}) {
    before_ = [refused](const std::string& step) {
      if (step == refused)
        throw std::runtime_error("no more");
    };
    EXPECT_THROW(poller.checkForChanges(), std::runtime_error) << "only the library's own exceptions end here";
  }
  before_ = [](const auto&) {};
  EXPECT_EQ(events(poller), Log{"Removed /d/b"});
}

TEST_F(ChangePollerTest, ThrowsWhatTheFirstLookThrows) {
  auto poller = makePoller(allKinds);
  before_ = [this](const std::string& step) {
    if (step == "list")
      throw Exception(ErrorCode::ResourceNotFound, folder_);
  };
  EXPECT_THROW(poller.buildInitialSnapshot(), Exception);
  SingleFolderChangePoller empty(folder_, nullptr, nullptr, nullptr, nullptr, allKinds,
                                 RecursiveChangePolling::DirectOnly);
  EXPECT_THROW(empty.buildInitialSnapshot(), std::bad_function_call);
}

TEST_F(ChangePollerTest, FindsItsWayInManyEntriesOfAnyOrder) {
  for (int number = 0; number < 20'000; ++number)
    entries_.push_back({std::to_string(number), number});
  auto poller = makePoller(allKinds);
  poller.buildInitialSnapshot();
  std::reverse(entries_.begin(), entries_.end());
  EXPECT_EQ(events(poller), Log{});
  entries_.erase(entries_.begin() + 5000);
  entries_.insert(entries_.begin() + 9000, {"new", 1});
  entries_[15'000].second = -1;
  EXPECT_EQ(events(poller).size(), 3u);
  EXPECT_EQ(events(poller), Log{});
}

}  // namespace
}  // namespace foundation::storage::provider
