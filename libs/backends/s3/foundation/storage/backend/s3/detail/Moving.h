#pragma once

#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/backend/s3/detail/Session.h>
#include <foundation/storage/provider/ReplacementPolicy.h>

namespace foundation::storage::backend::s3::detail {

/// Moves a file: copies it, then removes it where it was. If the latter fails, both are there.
void moveFile(Session& session, const Place& source, const Place& destination, provider::ReplacementPolicy policy);

/// Moves a folder: copies all that it holds, several objects at once, and removes it where it was when all is there.
/// Where copying fails, what was copied is removed again, and the source is whole. What comes into the source meanwhile
/// may stay there. Needs memory for the keys.
/// @param root  of the bucket
void moveFolder(Session& session, const provider::StorageIRI& root, const Place& source, const Place& destination,
                provider::ReplacementPolicy policy);

}  // namespace foundation::storage::backend::s3::detail
