#include <foundation/storage/provider/FolderAttributes.h>

#include <foundation/storage/provider/detail/LazyFlag.h>

#include <utility>

namespace foundation::storage::provider {

using boost::posix_time::ptime;

struct FolderAttributes::Record {
  template <class Writable>
  Record(const ptime& time, Writable isWritable) : lastModified(time), writable(std::move(isWritable)) {}

  ptime lastModified;
  detail::LazyFlag writable;
  detail::LazyFlag hidden{false};
  detail::LazyFlag symlink{false};
};

FolderAttributes::FolderAttributes(const ptime& lastModified, bool writable)
    : record_(std::make_shared<Record>(lastModified, writable)) {}

FolderAttributes::FolderAttributes(const ptime& lastModified, std::function<bool()> writable)
    : record_(std::make_shared<Record>(lastModified, std::move(writable))) {}

ptime FolderAttributes::getLastModified() const { return record_->lastModified; }
bool FolderAttributes::isHidden() const { return record_->hidden.get(); }
bool FolderAttributes::isSymlink() const { return record_->symlink.get(); }
bool FolderAttributes::isWritable() const { return record_->writable.get(); }

FolderAttributes& FolderAttributes::withHiddenAttribute(bool hidden) {
  record_->hidden.set(hidden);
  return *this;
}

FolderAttributes& FolderAttributes::withHiddenAttribute(std::function<bool()> hidden) {
  record_->hidden.set(std::move(hidden));
  return *this;
}

FolderAttributes& FolderAttributes::withSymlinkStatusAttribute(bool symlink) {
  record_->symlink.set(symlink);
  return *this;
}

FolderAttributes& FolderAttributes::withSymlinkStatusAttribute(std::function<bool()> symlink) {
  record_->symlink.set(std::move(symlink));
  return *this;
}

}  // namespace foundation::storage::provider
