#include <foundation/storage/backend/local/detail/posix/RecursiveListing.h>

#include <foundation/storage/provider/Exception.h>

#include <stdexcept>
#include <utility>

namespace foundation::storage::backend::local::detail {

using provider::ErrorCode;
using provider::FolderEntry;

namespace {

FolderEntry renamed(const FolderEntry& entry, std::u16string path) {
  if (const auto& attributes = entry.getFileAttributes())
    return {std::move(path), *attributes};
  if (const auto& attributes = entry.getFolderAttributes())
    return {std::move(path), *attributes};
  return {std::move(path), entry.isFile() ? FolderEntry::EntryType::File : FolderEntry::EntryType::Folder};
}

}  // namespace

RecursiveListing::RecursiveListing(Configuration configuration, const provider::StorageIRI& location,
                                   EntryDetail detail)
    : configuration_(std::move(configuration)),
      location_(location),
      detail_(detail),
      folder_(std::in_place, configuration_, location, EntryFilter::All, detail) {}

FolderEntry RecursiveListing::current() const {
  if (!current_)
    throw std::logic_error("A listing has no current entry before its first one and after its end.");
  return *current_;
}

bool RecursiveListing::hasNext() const {
  if (!next_)
    readNext();
  return next_.has_value();
}

void RecursiveListing::next() {
  hasNext();
  current_ = std::exchange(next_, std::nullopt);
}

void RecursiveListing::reset() {
  folder_.emplace(configuration_, location_, EntryFilter::All, detail_);
  prefix_.clear();
  folders_.clear();
  next_.reset();
  current_.reset();
}

void RecursiveListing::readNext() const {
  while (folder_ && !folder_->hasNext())
    if (!openNextFolder())
      return;
  if (!folder_)
    return;
  folder_->next();
  const auto entry = folder_->current();
  auto path = prefix_ + entry.getName();
  if (!entry.isFile() && !folder_->isCurrentLink())
    folders_.push_back(path);
  next_ = renamed(entry, std::move(path));
}

/// @return false where there is none left
bool RecursiveListing::openNextFolder() const {
  while (!folders_.empty()) {
    const auto path = std::move(folders_.back());
    folders_.pop_back();
    try {
      // What has become a link, or a file, since it was listed is no subfolder any more.
      folder_.emplace(configuration_, provider::StorageIRI(location_, path), EntryFilter::All, detail_, Links::Keep);
      prefix_ = path + u"/";
      return true;
    } catch (const provider::Exception& failure) {
      if (failure.getErrorCode() != ErrorCode::ResourceNotFound && failure.getErrorCode() != ErrorCode::InvalidLocation)
        throw;
    }
  }
  folder_.reset();
  return false;
}

}  // namespace foundation::storage::backend::local::detail
