#pragma once

#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/backend/s3/detail/Session.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/ReplacementPolicy.h>

#include <optional>

// What the store is asked before anything is done. All of it throws `Exception` with the location of the place that it
// is asked about, and the codes that `IProvider` names.

namespace foundation::storage::backend::s3::detail {

/// What is there; nothing where the bucket is missing, either.
/// @{
std::optional<client::ObjectInfo> findFile(const Session& session, const Place& place);
bool folderExists(const Session& session, const Place& place);
/// @}

/// The same, where it has to be there.
/// @{
client::ObjectInfo requireFile(const Session& session, const Place& place);
void requireFolder(const Session& session, const Place& place);
/// @}

/// Throws where the place is the root.
void requireNoRoot(const Place& place);

/// To be thrown where something is there that is not to be replaced.
provider::Exception alreadyThere(const Place& place);
/// The reason, to be thrown, why there is no file, or no folder, at a place where none was found.
/// @{
provider::Exception noFile(const Session& session, const Place& place);
provider::Exception noFolder(const Session& session, const Place& place);
/// @}

/// Throws unless there is a folder that holds the place, or could; the root is in none.
void requireParent(Session& session, const Place& place);
/// Whether a folder is at a place whose parent was required; asks only where that is not known.
bool hasFolder(const Session& session, const Place& place);
/// Throws unless a file can be written there.
void requireRoomForFile(Session& session, const Place& place);
/// Throws unless a file can be moved or copied there.
void requireDestination(Session& session, const Place& place, provider::ReplacementPolicy policy);

}  // namespace foundation::storage::backend::s3::detail
