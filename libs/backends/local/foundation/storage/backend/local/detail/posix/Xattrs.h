#pragma once

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Extended attributes (xattr(7)).
namespace foundation::storage::backend::local::detail {

/// The names under which the system keeps access control lists (acl(5)): an entry's own, and the one that a folder
/// gives its new entries.
constexpr std::string_view accessListName = "system.posix_acl_access";
constexpr std::string_view defaultListName = "system.posix_acl_default";

/// The full names of the attributes of what is at `path`; none where the file system has no attributes. Throws
/// `Exception` with `location`.
std::vector<std::string> attributeNames(const std::string& path, const provider::StorageIRI& location);

/// An attribute's bytes; nothing where there is none of that name (any more), nor anything at `path`. Throws
/// `Exception` with `location`.
std::optional<std::string> attributeValue(const std::string& path, const std::string& name,
                                          const provider::StorageIRI& location);

/// Which are copied.
enum class Attributes {
  All,          ///< users' own (user.*) and the administrator's (trusted.*)
  AccessLists,  ///< with them the group's permissions, where an access list says what these are
};
/// What becomes of attributes where the file system has none of their kind.
enum class Unsupported { Fail, LeaveOut };

/// Gives an open file attributes of what is at `path`. What only the system may decide (security.*) it decides by
/// itself for every file. Where nothing is at `path` any more, there is nothing to give. Throws `Exception` with
/// `location` where it cannot.
void copyAttributes(const std::string& path, const std::vector<std::string>& names, int to, Attributes which,
                    Unsupported unsupported, const provider::StorageIRI& location);

/// Takes the access control list of that name from an open file, which its folder may have given it.
/// @param name  ends in NUL
/// @return whether there is none now; errno says why not
bool dropAccessList(int file, std::string_view name) noexcept;

}  // namespace foundation::storage::backend::local::detail
