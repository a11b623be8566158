#include <foundation/storage/testing/Operation.h>

#include <array>
#include <cstddef>
#include <ostream>

namespace foundation::storage::testing {
namespace {

// In the order of the enumerators.
constexpr std::array names{
    "CreateFile",
    "CreateFolder",
    "CreateFolderRecursive",
    "FileExists",
    "FolderExists",
    "Exists",
    "ExistsExtended",
    "RemoveFile",
    "RemoveFolder",
    "RemoveFolderRecursively",
    "MoveFile",
    "MoveFolder",
    "CopyFile",
    "CopyFileAtomic",
    "GetFileAttributes",
    "GetFolderAttributes",
    "GetExtendedAttributes",
    "SetLastModified",
    "SetWritable",
    "TruncateToSize",
    "OpenStream",
    "OpenReadOnlyStream",
    "OpenTransactionalStream",
    "List",
    "ListNext",
    "Read",
    "Write",
    "Seek",
    "CloseStream",
    "Commit",
    "Abort",
    "GetCanonicalLocation",
    "GetFileIdentity",
    "GetPathComparator",
    "GetFilenameSensitivity",
    "GetProviderStorageInfo",
    "GetProviderCacheUsage",
    "PublishEvents",
    "StopPublishEvents",
    "Configure",
    "Flush",
    "Invalidate",
    "Shutdown",
};

static_assert(names.size() == static_cast<std::size_t>(Operation::Shutdown) + 1);

}  // namespace

std::ostream& operator<<(std::ostream& out, Operation operation) {
  const auto number = static_cast<std::size_t>(operation);
  return number < names.size() ? out << names[number] : out << "Operation " << number;
}

}  // namespace foundation::storage::testing
