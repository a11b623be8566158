#include <foundation/storage/backend/local/detail/posix/FolderListing.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Attributes.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/provider/ScratchFiles.h>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <stdexcept>
#include <utility>

namespace foundation::storage::backend::local::detail {

using provider::FolderEntry;

namespace {

Descriptor openFolder(const FileSystem& files, const provider::StorageIRI& location) {
  auto folder = files.open(nativePath(location), O_RDONLY | O_DIRECTORY);
  if (!folder.isOpen())
    throw systemFailure(errno, "open", location);
  return folder;
}

}  // namespace

FolderListing::FolderListing(Configuration configuration, const provider::StorageIRI& location, EntryFilter filter,
                             EntryDetail detail)
    : FolderListing(configuration, location, openFolder(*configuration.files, location), filter, detail) {}

FolderListing::FolderListing(Configuration configuration, const provider::StorageIRI& location, Descriptor folder,
                             EntryFilter filter, EntryDetail detail, std::u16string prefix)
    : configuration_(std::move(configuration)),
      filter_(filter),
      detail_(detail),
      folderPath_(nativePath(location)),
      prefix_(std::move(prefix)),
      reader_(std::move(folder), location) {
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
}

std::optional<FolderListing::Taken> FolderListing::take() {
  if (!hasNext())
    return std::nullopt;
  Taken taken{*std::move(next_), isNextLink_};
  next_.reset();
  return taken;
}

void FolderListing::reset() {
  reader_.rewind();
  next_.reset();
  current_.reset();
  atEnd_ = false;
}

void FolderListing::readNext() const {
  while (const RawEntry* entry = reader_.read()) {
    if (isLeftOut(entry->name))
      continue;
    next_ = makeEntry(*entry);
    if (next_)
      return;
  }
  atEnd_ = true;
}

FolderListing::Examined FolderListing::examine(const RawEntry& entry) const {
  Examined examined;
  struct stat status;
  if (sys().fstatat(reader_.descriptor(), entry.name, &status, AT_SYMLINK_NOFOLLOW) == -1) {
    examined.exists = errno != ENOENT;
    examined.isLink = entry.type == DT_LNK;
    return examined;
  }
  examined.isLink = S_ISLNK(status.st_mode);
  struct stat target;
  if (examined.isLink && statusBehind(entry.name, target) == 0)
    status = target;
  examined.status = status;
  return examined;
}

int FolderListing::statusBehind(const char* link, struct stat& status) const {
  if (configuration_.files->isWhole())  // then the descriptor is a shorter way than the path
    return sys().fstatat(reader_.descriptor(), link, &status, 0);
  return configuration_.files->status(folderPath_ + link, Links::Follow, status);
}

std::u16string FolderListing::nameOf(const RawEntry& entry) const {
  std::u16string name = prefix_;
  fl::i18n::append_ustring(name, entry.name);
  return name;
}

std::optional<FolderEntry> FolderListing::makeEntry(const RawEntry& entry) const {
  isNextLink_ = false;
  const bool typeIsKnown = entry.type != DT_UNKNOWN && entry.type != DT_LNK;
  if (typeIsKnown && !passes(entry.type == DT_DIR))
    return std::nullopt;
  if (typeIsKnown && detail_ == EntryDetail::NamesOnly)
    return FolderEntry(nameOf(entry), entry.type == DT_DIR ? EntryType::Folder : EntryType::File);
  const auto examined = examine(entry);
  isNextLink_ = examined.isLink;
  const bool isFolder = examined.status ? S_ISDIR(examined.status->st_mode) : entry.type == DT_DIR;
  if (!examined.exists || !passes(isFolder))
    return std::nullopt;
  if (detail_ == EntryDetail::NamesOnly || !examined.status)
    return FolderEntry(nameOf(entry), isFolder ? EntryType::Folder : EntryType::File);
  return withAttributes(entry, examined, isFolder);
}

FolderEntry FolderListing::withAttributes(const RawEntry& entry, const Examined& examined, bool isFolder) const {
  const auto describe = [&](auto attributes) {
    attributes.withHiddenAttribute(isHiddenName(entry.name)).withSymlinkStatusAttribute(examined.isLink);
    return FolderEntry(nameOf(entry), std::move(attributes));
  };
  return isFolder ? describe(folderAttributes(*examined.status, {configuration_.files, folderPath_ + entry.name}))
                  : describe(fileAttributes(*examined.status, {configuration_.files, folderPath_ + entry.name}));
}

bool FolderListing::isLeftOut(const char* name) const {
  return configuration_.hidesScratchFiles && isHiddenName(name) && provider::isScratchName(fl::i18n::to_ustring(name));
}

bool FolderListing::passes(bool isFolder) const {
  return filter_ == EntryFilter::All || (filter_ == EntryFilter::Folders) == isFolder;
}

}  // namespace foundation::storage::backend::local::detail
