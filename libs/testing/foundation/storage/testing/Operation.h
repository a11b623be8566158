#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::testing {

/// What can be asked of a provider, of a stream that it opened, and of a listing that it began.
enum class Operation : std::int32_t {
  CreateFile,
  CreateFolder,
  CreateFolderRecursive,
  FileExists,
  FolderExists,
  Exists,
  ExistsExtended,
  RemoveFile,
  RemoveFolder,
  RemoveFolderRecursively,
  MoveFile,
  MoveFolder,
  CopyFile,
  CopyFileAtomic,
  GetFileAttributes,
  GetFolderAttributes,
  GetExtendedAttributes,
  SetLastModified,
  SetWritable,
  TruncateToSize,
  OpenStream,
  OpenReadOnlyStream,
  OpenTransactionalStream,
  List,         ///< beginning any listing, and beginning it anew
  ListNext,     ///< looking for the next entry of a listing, and moving to it
  Read,         ///< of streams and transactions
  Write,        ///< of streams and transactions
  Seek,         ///< of streams and transactions
  CloseStream,  ///< closing a plain stream
  Commit,       ///< closing a transaction
  Abort,        ///< closing a transaction; not by its destructor
  GetCanonicalLocation,
  GetFileIdentity,
  GetPathComparator,
  GetFilenameSensitivity,
  GetProviderStorageInfo,
  GetProviderCacheUsage,
  PublishEvents,      ///< of a file or a folder
  StopPublishEvents,  ///< of a file or a folder
  Configure,
  Flush,
  Invalidate,
  Shutdown,
};

/// Writes the enumerator's name, or its number if it has none.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, Operation operation);

}  // namespace foundation::storage::testing
