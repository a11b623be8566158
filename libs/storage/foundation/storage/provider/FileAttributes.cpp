#include <foundation/storage/provider/FileAttributes.h>

#include <foundation/storage/provider/detail/LazyFlag.h>

#include <utility>

namespace foundation::storage::provider {

using boost::posix_time::ptime;

struct FileAttributes::Record {
  template <class Writable>
  Record(const std::optional<std::uint64_t>& itsSize, const ptime& time, Writable isWritable)
      : size(itsSize), lastModified(time), writable(std::move(isWritable)) {}

  std::optional<std::uint64_t> size;
  ptime lastModified;
  detail::LazyFlag writable;
  detail::LazyFlag hidden{false};
  detail::LazyFlag symlink{false};
};

FileAttributes::FileAttributes(const std::optional<std::uint64_t>& size, const ptime& lastModified, bool writable)
    : record_(std::make_shared<Record>(size, lastModified, writable)) {}

FileAttributes::FileAttributes(const std::optional<std::uint64_t>& size, const ptime& lastModified,
                               std::function<bool()> writable)
    : record_(std::make_shared<Record>(size, lastModified, std::move(writable))) {}

std::uint64_t FileAttributes::getSize() const { return record_->size.value_or(0); }
bool FileAttributes::hasSizeAttribute() const { return record_->size.has_value(); }
ptime FileAttributes::getLastModified() const { return record_->lastModified; }
bool FileAttributes::isHidden() const { return record_->hidden.get(); }
bool FileAttributes::isSymlink() const { return record_->symlink.get(); }
bool FileAttributes::isWritable() const { return record_->writable.get(); }

FileAttributes& FileAttributes::withHiddenAttribute(bool hidden) {
  record_->hidden.set(hidden);
  return *this;
}

FileAttributes& FileAttributes::withHiddenAttribute(std::function<bool()> hidden) {
  record_->hidden.set(std::move(hidden));
  return *this;
}

FileAttributes& FileAttributes::withSymlinkStatusAttribute(bool symlink) {
  record_->symlink.set(symlink);
  return *this;
}

FileAttributes& FileAttributes::withSymlinkStatusAttribute(std::function<bool()> symlink) {
  record_->symlink.set(std::move(symlink));
  return *this;
}

}  // namespace foundation::storage::provider
