#include <foundation/storage/backend/archive/detail/library/Headers.h>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <ctime>

namespace foundation::storage::backend::archive::detail::library {
namespace {

using boost::posix_time::ptime;

constexpr std::int64_t earliest = -17'987'443'200;  ///< 1400-01-01, as far as `ptime` goes; in seconds since 1970
constexpr std::int64_t latest = 253'402'300'799;    ///< the end of 9999

ptime epoch() { return ptime(boost::gregorian::date(1970, 1, 1)); }

/// libarchive takes a tar's time of -1.25 for -1 second and 250,000,000 nanoseconds, both ways. The other formats tell
/// no such times.
ptime lastModifiedIn(archive_entry* header) {
  if (archive_entry_mtime_is_set(header) == 0)
    return {};
  const std::int64_t seconds = archive_entry_mtime(header);
  if (seconds < earliest || seconds > latest)
    return {};
  const std::int64_t fraction = archive_entry_mtime_nsec(header);
  const auto microseconds = seconds < 0 ? -((fraction + 999) / 1000) : fraction / 1000;
  return epoch() + boost::posix_time::seconds(seconds) + boost::posix_time::microseconds(microseconds);
}

EntryKind kindIn(archive_entry* header, const std::string& name) {
  switch (archive_entry_filetype(header)) {
    case AE_IFREG:
    case 0:  // a hard link's
      // An old way to store a folder.
      return name.ends_with('/') ? EntryKind::Folder : EntryKind::File;
    case AE_IFDIR:
      return EntryKind::Folder;
    case AE_IFLNK:
      return EntryKind::Link;
    default:
      return EntryKind::Special;
  }
}

}  // namespace

std::string nameIn(archive_entry* header) {
  const auto* name = archive_entry_pathname(header);
  if (name == nullptr)
    name = archive_entry_pathname_utf8(header);
  return name != nullptr ? name : "";
}

Entry entryIn(archive_entry* header) {
  Entry entry;
  entry.name = nameIn(header);
  entry.kind = kindIn(header, entry.name);
  entry.isEncrypted = archive_entry_is_encrypted(header) != 0;
  entry.permissions = static_cast<std::uint32_t>(archive_entry_perm(header)) & 07777;
  entry.lastModified = lastModifiedIn(header);
  if (entry.kind == EntryKind::File && archive_entry_size_is_set(header) != 0 && archive_entry_size(header) >= 0)
    entry.size = static_cast<std::uint64_t>(archive_entry_size(header));
  if (const auto* target = archive_entry_symlink(header); entry.kind == EntryKind::Link && target != nullptr)
    entry.linkTarget = target;
  return entry;
}

void setLastModified(archive_entry* header, const ptime& time) {
  if (time.is_special()) {
    archive_entry_unset_mtime(header);
    return;
  }
  constexpr std::int64_t million = 1'000'000;
  const auto microseconds = (time - epoch()).total_microseconds();
  const auto fraction = (microseconds < 0 ? -1 : 1) * (microseconds % million);
  archive_entry_set_mtime(header, static_cast<std::time_t>(microseconds / million), static_cast<long>(fraction * 1000));
}

}  // namespace foundation::storage::backend::archive::detail::library
