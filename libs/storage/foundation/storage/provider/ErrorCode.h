#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// Why an operation on a store failed: what a caller branches on. The numbers are part of the contract.
enum class ErrorCode : std::int32_t {
  FolderNotEmpty = 0,
  InvalidLocation = 1,  ///< no such name can be here: malformed, too long, through a file, the wrong kind of entry
  PermissionDenied = 2,
  ResourceAlreadyExists = 3,
  ResourceNotFound = 4,
  FileTooLarge = 5,
  ResourceInUse = 6,
  ReadOnlyProvider = 7,  ///< the whole store cannot be written to
  NoSpaceLeft = 8,
  IOError = 9,
  InternalError = 10,
  UnsupportedOperation = 11,  ///< the store has no such operation
  Unknown = 12,
};

/// Writes "ErrorCode::ResourceNotFound" and the like, "Unhandled ErrorCode" for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const ErrorCode& code);

}  // namespace foundation::storage::provider
