#pragma once

#include <foundation/storage/backend/local/detail/posix/FileSystem.h>

namespace foundation::storage::backend::local::detail {

enum class MovedEntry { File, Folder };

/// rename(2).
/// @return 0, or -1 with errno
int renameOver(const Place& from, const Place& to) noexcept;

/// A rename that never replaces anything: EEXIST where there is something at `to`.
///
/// On file systems that have none a file is linked exclusively, and what somebody puts in the place of `from` before
/// that is unlinked goes with it. A folder cannot be linked; there is a moment between the look and the rename in which
/// somebody may create the destination, and an empty folder would then be replaced.
/// @return 0, or -1 with errno
int renameExclusively(const Place& from, const Place& to, MovedEntry kind) noexcept;

}  // namespace foundation::storage::backend::local::detail
