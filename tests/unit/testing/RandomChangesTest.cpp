// Two thousand random changes against a list of what happened that is kept apart: no net change is missed, and an
// idle folder has no events.

#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/provider/events/SingleFolderChangePoller.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/property_tree/ptree.hpp>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

namespace foundation::storage::testing {
namespace {

using namespace provider;
using boost::posix_time::ptime;
using events::EntryType;
using events::Kind;

/// What a folder holds: type and time by path.
using State = std::map<std::u16string, std::pair<EntryType, ptime>>;
/// Each change once, whatever the order.
using Changes = std::set<std::pair<Kind, std::u16string>>;

class RandomChanges : public ::testing::TestWithParam<RecursiveChangePolling> {
 protected:
  RandomChanges() {
    for (const auto* folder : {u"d", u"e"})
      StorageItem(root_, std::u16string(folder)).createFolder();
  }

  StorageItem item(const std::u16string& path) const { return {root_, path}; }
  bool isRecursive() const { return GetParam() == RecursiveChangePolling::Recursive; }

  /// Read from the store by itself, without the poller.
  State look() const {
    State state;
    for (const auto entries = isRecursive() ? root_.listAllRecursive(u"") : root_.listAll(u""); entries->hasNext();) {
      entries->next();
      const auto entry = entries->current();
      const auto type = entry.isFile() ? EntryType::File : EntryType::Folder;
      state[entry.getName()] = {type, entry.isFile() ? entry.getFileAttributes()->getLastModified()
                                                     : entry.getFolderAttributes()->getLastModified()};
    }
    return state;
  }

  static Changes difference(const State& before, const State& after) {
    Changes changes;
    for (const auto& [path, now] : after)
      if (const auto known = before.find(path); known == before.end())
        changes.emplace(Kind::EntryAdded, path);
      else if (known->second.second != now.second)
        changes.emplace(Kind::EntryModified, path);
    for (const auto& [path, then] : before)
      if (!after.contains(path))
        changes.emplace(Kind::EntryRemoved, path);
    return changes;
  }

  std::size_t draw(std::size_t limit) { return random_() % limit; }

  std::u16string drawPath() {
    const std::u16string name(1, static_cast<char16_t>(u'p' + draw(8)));
    const std::u16string folders[] = {u"", u"", u"d/", u"e/"};
    return folders[draw(4)] + name;
  }

  void change() {
    const auto path = drawPath();
    const auto place = item(path);
    const auto kind = place.exists();
    switch (draw(5)) {
      case 0:
        return write(place);
      case 1:
        return remove(place, kind);
      case 2:
        if (kind == ExistenceType::AsFile)
          place.moveFile(item(drawPathForFile()).getLocation(), ReplacementPolicy::Overwrite);
        return;
      case 3:  // back in time, too
        if (kind != ExistenceType::AsNeither)
          place.setLastModified(ptime(boost::gregorian::date(2000, 1, 1)) + boost::posix_time::hours(draw(100)));
        return;
      default:  // something of the other kind in its place
        remove(place, kind);
        if (kind == ExistenceType::AsFile)
          place.createFolder();
        else
          write(place);
    }
  }

 private:
  void write(const StorageItem& place) const {
    if (!place.folderExists())
      place.openStream({})->write("same", 4);
  }
  void remove(const StorageItem& place, ExistenceType kind) const {
    if (kind == ExistenceType::AsFile)
      place.removeFile();
    else if (kind == ExistenceType::AsFolder)
      place.removeFolderRecursively();
  }
  std::u16string drawPathForFile() {
    auto path = drawPath();
    while (item(path).folderExists())
      path.push_back(u'x');
    return path;
  }

  const StorageIRI location_{u"memory:///"};
  std::mt19937 random_{20'241'121};  // the same changes in every run

 protected:
  const std::shared_ptr<IProvider> store_ = backend::memory::MemoryProviderFactory().buildProvider(location_);
  const StorageItem root_{store_, location_};
  Changes published_;
  SingleFolderChangePoller poller_{
      location_,
      [this](const Kind& kind, const StorageIRI& watched, const StorageIRI& subject, const EntryType&, const auto&) {
        EXPECT_TRUE(published_.emplace(kind, subject.makePathRelativeTo(watched)).second) << "published twice";
      },
      [this](const StorageIRI& folder) {
        return isRecursive() ? store_->listAllRecursive(folder, u"") : store_->listAll(folder, u"");
      },
      [this](const StorageIRI& file) { return store_->getFileAttributes(file); },
      [this](const StorageIRI& folder) { return store_->getFolderAttributes(folder); },
      {Kind::EntryAdded, Kind::EntryModified, Kind::EntryRemoved},
      GetParam()};
};

TEST_P(RandomChanges, AreAllPublishedOnceAndNothingElse) {
  poller_.buildInitialSnapshot();
  auto known = look();
  for (int done = 0; done < 2000;) {
    const auto burst = 1 + static_cast<int>(draw(8));
    for (int count = 0; count < burst; ++count, ++done)
      change();
    const auto now = look();
    published_.clear();
    poller_.checkForChanges();
    ASSERT_EQ(published_, difference(known, now)) << "after " << done << " changes";
    published_.clear();
    poller_.checkForChanges();
    ASSERT_TRUE(published_.empty()) << "on an idle folder";
    known = now;
  }
}

INSTANTIATE_TEST_SUITE_P(Polled, RandomChanges,
                         ::testing::Values(RecursiveChangePolling::DirectOnly, RecursiveChangePolling::Recursive));

}  // namespace
}  // namespace foundation::storage::testing
