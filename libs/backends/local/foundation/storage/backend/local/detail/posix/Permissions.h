#pragma once

#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

/// How much of an owner and a group a new file could be given. Most programs may give files to no other user.
enum class Ownership { None, Group, Whole };

/// Gives an open file the owner and the group of `status`, or only the group.
Ownership takeOwner(int file, const struct stat& status) noexcept;

/// The permissions for a new file that is to be like one with `mode`, without the set-user-ID, set-group-ID and sticky
/// bits: where it does not have that one's group, or the group's bits are not the group's (acl(5)), its group may do
/// what all others may.
mode_t modeFor(mode_t mode, bool isTheGroups) noexcept;

}  // namespace foundation::storage::backend::local::detail
