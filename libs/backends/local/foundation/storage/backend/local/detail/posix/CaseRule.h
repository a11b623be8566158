#pragma once

#include <foundation/storage/backend/local/detail/posix/FileSystem.h>
#include <foundation/storage/provider/CaseModifier.h>

#include <string>

namespace foundation::storage::backend::local::detail {

/// Whether names that differ in case are different in the folder at `path`, or, where there is none, in the next one
/// above. It depends on the file system, and on ext4 and the like on the folder (FS_CASEFOLD_FL in ioctl_iflags(2)).
provider::CaseModifier caseRuleAt(const FileSystem& files, std::string path);

}  // namespace foundation::storage::backend::local::detail
