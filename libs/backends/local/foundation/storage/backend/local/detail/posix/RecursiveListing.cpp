#include <foundation/storage/backend/local/detail/posix/RecursiveListing.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/backend/local/detail/posix/Walk.h>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <linux/openat2.h>

#include <stdexcept>
#include <utility>

namespace foundation::storage::backend::local::detail {

using provider::FolderEntry;

RecursiveListing::RecursiveListing(Configuration configuration, const provider::StorageIRI& location,
                                   EntryDetail detail)
    : configuration_(std::move(configuration)), location_(location), detail_(detail) {
  begin();
}

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
  folder_.reset();
  folders_.clear();
  next_.reset();
  current_.reset();
  begin();
}

void RecursiveListing::begin() const {
  top_ = configuration_.files->open(nativePath(location_), O_RDONLY | O_DIRECTORY);
  auto folder = top_.isOpen() ? openWithin(".") : Descriptor();
  if (!folder.isOpen())
    throw systemFailure(errno, "open", location_);
  folder_.emplace(configuration_, location_, std::move(folder), EntryFilter::All, detail_);
}

void RecursiveListing::readNext() const {
  while (folder_) {
    if (auto taken = folder_->take()) {
      if (!taken->entry.isFile() && !taken->isLink)
        folders_.push_back(taken->entry.getName());
      next_ = std::move(taken->entry);
      return;
    }
    if (!openNextFolder())
      return;
  }
}

/// @return false where there is none left
bool RecursiveListing::openNextFolder() const {
  while (!folders_.empty()) {
    auto path = std::move(folders_.back());
    folders_.pop_back();
    if (auto folder = openWithin(fl::i18n::to_string(path)); folder.isOpen()) {
      const provider::StorageIRI location(location_, path);
      folder_.emplace(configuration_, location, std::move(folder), EntryFilter::All, detail_, path + u"/");
      return true;
    }
    // What is a link or a file by now, or on the way to which there is one, is no subfolder any more.
    if (errno != ENOENT && errno != ENOTDIR && errno != ELOOP)
      throw systemFailure(errno, "open", provider::StorageIRI(location_, path));
  }
  folder_.reset();
  top_ = Descriptor();
  return false;
}

/// Through no link, whatever has come to the place of a folder above since it was listed.
Descriptor RecursiveListing::openWithin(const std::string& path) const {
  constexpr int asFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  if (path.size() < PATH_MAX) {
    Descriptor opened(sys().openBeneath(top_.get(), path.c_str(), asFolder, 0, RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS));
    const bool isUncertain = errno == ENOSYS || errno == EPERM || errno == EAGAIN;
    if (opened.isOpen() || !isUncertain)
      return opened;
  }
  Walk walk(top_.get(), {.isConfined = true, .followsLinks = false});
  return walk.go(path, false) ? Descriptor(sys().openat(walk.folder(), walk.name().c_str(), asFolder, 0))
                              : Descriptor();
}

}  // namespace foundation::storage::backend::local::detail
