#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// Why an operation on a store failed: what a caller branches on. The numbers are part of the contract.
enum class ErrorCode : std::int32_t {
  FolderNotEmpty = 0,    ///< a folder that was to be removed or replaced holds something
  InvalidLocation = 1,   ///< no such name can be here: malformed, too long, through a file, the wrong kind of entry
  PermissionDenied = 2,  ///< the store does not let this user, or the entry is not writable
  ResourceAlreadyExists = 3,  ///< something is there that the operation, or its policy, keeps
  ResourceNotFound = 4,       ///< nothing is there, or the folder that should hold it is missing
  FileTooLarge = 5,           ///< the file would pass a limit of the store's, or of an option
  ResourceInUse = 6,          ///< somebody else has it; trying again later may help
  ReadOnlyProvider = 7,       ///< the whole store cannot be written to
  NoSpaceLeft = 8,            ///< the store, or this user's share of it, is full
  IOError = 9,                ///< the device or the network failed, or what is stored is damaged
  InternalError = 10,         ///< the process ran out of something: memory, descriptors
  UnsupportedOperation = 11,  ///< the store has no such operation
  Unknown = 12,               ///< none of the others says it; the contexts may
};

/// Writes "ErrorCode::ResourceNotFound" and the like, "Unhandled ErrorCode" for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const ErrorCode& code);

}  // namespace foundation::storage::provider
