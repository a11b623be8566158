#include <foundation/storage/backend/local/detail/posix/FolderListing.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Attributes.h>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <stdexcept>
#include <utility>

namespace foundation::storage::backend::local::detail {

using provider::FolderEntry;

FolderListing::FolderListing(const provider::StorageIRI& location, EntryFilter filter, EntryDetail detail)
    : filter_(filter), detail_(detail), folderPath_(nativePath(location)), reader_(location) {
  if (folderPath_.back() != '/')
    folderPath_.push_back('/');
}

FolderEntry FolderListing::current() const {
  if (!current_)
    throw std::logic_error("A listing has no current entry before its first one and after its end.");
  return *current_;
}

bool FolderListing::hasNext() const {
  if (!next_ && !atEnd_)
    readNext();
  return next_.has_value();
}

void FolderListing::next() {
  hasNext();
  current_ = std::exchange(next_, std::nullopt);
  isCurrentLink_ = isNextLink_;
}

void FolderListing::reset() {
  reader_.rewind();
  next_.reset();
  current_.reset();
  atEnd_ = false;
}

void FolderListing::readNext() const {
  while (const RawEntry* entry = reader_.read()) {
    next_ = makeEntry(*entry);
    if (next_)
      return;
  }
  atEnd_ = true;
}

FolderListing::Examined FolderListing::examine(const RawEntry& entry) const {
  Examined examined;
  struct stat status;
  if (fstatat(reader_.descriptor(), entry.name, &status, AT_SYMLINK_NOFOLLOW) == -1) {
    examined.exists = errno != ENOENT;
    examined.isLink = entry.type == DT_LNK;
    return examined;
  }
  examined.isLink = S_ISLNK(status.st_mode);
  struct stat target;
  if (examined.isLink && fstatat(reader_.descriptor(), entry.name, &target, 0) == 0)
    status = target;
  examined.status = status;
  return examined;
}

std::optional<FolderEntry> FolderListing::makeEntry(const RawEntry& entry) const {
  isNextLink_ = false;
  const bool typeIsKnown = entry.type != DT_UNKNOWN && entry.type != DT_LNK;
  if (typeIsKnown && !passes(entry.type == DT_DIR))
    return std::nullopt;
  if (typeIsKnown && detail_ == EntryDetail::NamesOnly)
    return FolderEntry(fl::i18n::to_ustring(entry.name), entry.type == DT_DIR ? EntryType::Folder : EntryType::File);
  const auto examined = examine(entry);
  isNextLink_ = examined.isLink;
  const bool isFolder = examined.status ? S_ISDIR(examined.status->st_mode) : entry.type == DT_DIR;
  if (!examined.exists || !passes(isFolder))
    return std::nullopt;
  if (detail_ == EntryDetail::NamesOnly || !examined.status)
    return FolderEntry(fl::i18n::to_ustring(entry.name), isFolder ? EntryType::Folder : EntryType::File);
  return withAttributes(entry, examined, isFolder);
}

FolderEntry FolderListing::withAttributes(const RawEntry& entry, const Examined& examined, bool isFolder) const {
  const auto describe = [&](auto attributes) {
    attributes.withHiddenAttribute(isHiddenName(entry.name)).withSymlinkStatusAttribute(examined.isLink);
    return FolderEntry(fl::i18n::to_ustring(entry.name), std::move(attributes));
  };
  return isFolder ? describe(folderAttributes(*examined.status, folderPath_ + entry.name))
                  : describe(fileAttributes(*examined.status, folderPath_ + entry.name));
}

bool FolderListing::passes(bool isFolder) const {
  return filter_ == EntryFilter::All || (filter_ == EntryFilter::Folders) == isFolder;
}

}  // namespace foundation::storage::backend::local::detail
