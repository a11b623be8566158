#include <foundation/storage/provider/events/SingleFolderChangePoller.h>

#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/detail/CaughtFailure.h>
#include <foundation/storage/provider/detail/FolderSnapshot.h>

#include <boost/property_tree/ptree.hpp>

#include <algorithm>

namespace foundation::storage::provider {

using detail::FolderSnapshot;
using events::EntryType;
using events::Kind;

SingleFolderChangePoller::SingleFolderChangePoller(StorageIRI folder, ChangeCallback callback, ListFolder listFolder,
                                                   FetchFileAttributes getFileAttributes,
                                                   FetchFolderAttributes getFolderAttributes, std::vector<Kind> kinds,
                                                   RecursiveChangePolling recursion)
    : folder_(std::move(folder)),
      callback_(std::move(callback)),
      listFolder_(std::move(listFolder)),
      getFileAttributes_(std::move(getFileAttributes)),
      getFolderAttributes_(std::move(getFolderAttributes)),
      kinds_(std::move(kinds)),
      recursion_(recursion),
      snapshot_(std::make_unique<FolderSnapshot>()) {}

SingleFolderChangePoller::~SingleFolderChangePoller() = default;

void SingleFolderChangePoller::buildInitialSnapshot() {
  const std::scoped_lock lock(mutex_);
  if (wants(Kind::WatchedFolderModified))
    snapshot_->own = getFolderAttributes_(folder_).getLastModified();
  if (!wantsEntries())
    return;
  snapshot_->begin();
  for (const auto entries = listFolder_(folder_); entries->hasNext();) {
    entries->next();
    const auto entry = entries->current();
    const auto [type, lastModified] = getTypeAndLastModified(entry);
    snapshot_->add(entry.getName(), type, lastModified);
  }
  snapshot_->finish();
}

void SingleFolderChangePoller::checkForChanges() const {
  const std::scoped_lock lock(mutex_);
  try {
    incrementalCompareAndPublish();
  } catch (const Exception& refusal) {
    if (refusal.getErrorCode() != ErrorCode::ResourceNotFound) {
      detail::logCaughtFailure("Error during change detection");
    } else if (wants(Kind::WatchedFolderRemoved)) {
      publish(Kind::WatchedFolderRemoved, folder_, EntryType::Folder);
      removed_ = true;
    }
  }
}

void SingleFolderChangePoller::incrementalCompareAndPublish() const {
  if (removed_ || hasNeitherGainedNorLostEntries())
    return;
  if (wants(Kind::WatchedFolderModified))
    compareFolder();
  if (wantsEntries())
    compareEntries();
}

/// The folder's own time tells, where only that is asked: it changes with every entry that comes or goes.
bool SingleFolderChangePoller::hasNeitherGainedNorLostEntries() const {
  const bool asksOnlyThat = recursion_ == RecursiveChangePolling::DirectOnly && !wants(Kind::EntryModified) &&
                            (wants(Kind::EntryAdded) || wants(Kind::EntryRemoved));
  return asksOnlyThat && snapshot_->own && getFolderAttributes_(folder_).getLastModified() == *snapshot_->own;
}

void SingleFolderChangePoller::compareFolder() const {
  const auto now = getFolderAttributes_(folder_).getLastModified();
  if (snapshot_->own != now)
    publish(Kind::WatchedFolderModified, folder_, EntryType::Folder);
  snapshot_->own = now;
}

void SingleFolderChangePoller::compareEntries() const {
  snapshot_->begin();
  try {
    for (const auto entries = listFolder_(folder_); entries->hasNext();) {
      entries->next();
      compareEntry(entries->current());
    }
    publishRemoved();
    snapshot_->finish();
  } catch (...) {
    snapshot_->abandon();
    snapshot_->own.reset();
    throw;
  }
}

void SingleFolderChangePoller::compareEntry(const FolderEntry& entry) const {
  const auto [type, lastModified] = getTypeAndLastModified(entry);
  auto* known = snapshot_->find(entry.getName());
  if (known != nullptr && !known->isSeen()) {
    if (wants(Kind::EntryModified) && known->lastModified != lastModified)
      publish(Kind::EntryModified, StorageIRI(folder_, entry.getName()), type);
    snapshot_->see(*known, type, lastModified);
    return;
  }
  if (wants(Kind::EntryAdded))
    publish(Kind::EntryAdded, StorageIRI(folder_, entry.getName()), type);
  if (known == nullptr)
    snapshot_->add(entry.getName(), type, lastModified);
}

void SingleFolderChangePoller::publishRemoved() const {
  if (!wants(Kind::EntryRemoved))
    return;
  std::vector<std::pair<StorageIRI, EntryType>> removed;
  for (const auto* entry : snapshot_->missing())
    removed.emplace_back(StorageIRI(folder_, entry->name), entry->type);
  std::sort(removed.begin(), removed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  for (const auto& [location, type] : removed)
    publish(Kind::EntryRemoved, location, type);
}

/// Of a listing that gives no attributes they are fetched one by one, unless nobody wants them.
SingleFolderChangePoller::Described SingleFolderChangePoller::getTypeAndLastModified(const FolderEntry& entry) const {
  const auto type = entry.isFile() ? EntryType::File : EntryType::Folder;
  if (!wants(Kind::EntryModified))
    return {type, boost::posix_time::not_a_date_time};
  const auto lastModified = [&](const auto& listed, const auto& fetch) {
    return listed ? listed->getLastModified() : fetch(StorageIRI(folder_, entry.getName())).getLastModified();
  };
  return {type, entry.isFile() ? lastModified(entry.getFileAttributes(), getFileAttributes_)
                               : lastModified(entry.getFolderAttributes(), getFolderAttributes_)};
}

bool SingleFolderChangePoller::wants(Kind kind) const {
  return std::find(kinds_.begin(), kinds_.end(), kind) != kinds_.end();
}

bool SingleFolderChangePoller::wantsEntries() const {
  return wants(Kind::EntryAdded) || wants(Kind::EntryModified) || wants(Kind::EntryRemoved);
}

void SingleFolderChangePoller::publish(Kind kind, const StorageIRI& subject, EntryType type) const {
  callback_(kind, folder_, subject, type, {});
}

}  // namespace foundation::storage::provider
