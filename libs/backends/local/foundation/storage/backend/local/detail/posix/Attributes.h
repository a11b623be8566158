#pragma once

#include <foundation/storage/backend/local/detail/posix/FileSystem.h>
#include <foundation/storage/provider/FileAttributes.h>
#include <foundation/storage/provider/FolderAttributes.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <functional>
#include <memory>
#include <string>
#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

/// A point in time of the system as UTC, to the microsecond; `not_a_date_time` beyond the years 1400
/// to 9999 that the type can hold.
boost::posix_time::ptime toTime(const timespec& time);

/// Whether an entry is hidden by its name.
inline bool isHiddenName(const std::string& name) { return name.starts_with('.'); }

/// An entry that may be asked about later.
struct EntryQuestion {
  std::shared_ptr<const FileSystem> files;
  std::string path;
};

/// What the system says of an entry. What costs another system call is
/// asked on demand: whether the effective user may write the file, or change the folder's entries
/// (false where that cannot be found out). Whether the name is hidden or a link is for the caller to add.
provider::FileAttributes fileAttributes(const struct stat& status, EntryQuestion question);
provider::FolderAttributes folderAttributes(const struct stat& status, EntryQuestion question);

/// Whether it is a link, asked on demand.
std::function<bool()> linkQuestion(EntryQuestion question);

}  // namespace foundation::storage::backend::local::detail
