#pragma once

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Extended attributes (xattr(7)).
namespace foundation::storage::backend::local::detail {

/// The name under which the system keeps a file's access control list (acl(5)).
constexpr std::string_view accessListName = "system.posix_acl_access";

/// The full names of the attributes of what is at `path`; none where the file system has no attributes. Throws
/// `Exception` with `location`.
std::vector<std::string> attributeNames(const std::string& path, const provider::StorageIRI& location);

/// An attribute's bytes; nothing where there is none of that name (any more). Throws `Exception` with `location`.
std::optional<std::string> attributeValue(const std::string& path, const std::string& name,
                                          const provider::StorageIRI& location);

enum class AccessList { Copy, LeaveOut };

/// Gives an open file the attributes of what is at `path`: users' own (user.*), the administrator's (trusted.*) and the
/// access control list. What only the system may decide (security.*) it decides by itself for every file. Throws
/// `Exception` with `location` where it cannot.
void copyAttributes(const std::string& path, const std::vector<std::string>& names, int to, AccessList accessList,
                    const provider::StorageIRI& location);

}  // namespace foundation::storage::backend::local::detail
