#pragma once

#include <foundation/storage/provider/FileAttributes.h>
#include <foundation/storage/provider/FolderAttributes.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <functional>
#include <string>
#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

/// A point in time of the system as UTC, to the microsecond; `not_a_date_time` beyond the years 1400
/// to 9999 that the type can hold.
boost::posix_time::ptime toTime(const timespec& time);

/// Whether an entry is hidden by its name.
inline bool isHiddenName(const std::string& name) { return name.starts_with('.'); }

/// What the system says of the entry at `path`, in the system's bytes. What costs another system call is
/// asked on demand: whether the effective user may write the file, or change the folder's entries
/// (false where that cannot be found out). Whether the name is hidden or a link is for the caller to add.
provider::FileAttributes fileAttributes(const struct stat& status, std::string path);
provider::FolderAttributes folderAttributes(const struct stat& status, std::string path);

/// Whether `path` names a link, asked on demand.
std::function<bool()> linkQuestion(std::string path);

}  // namespace foundation::storage::backend::local::detail
