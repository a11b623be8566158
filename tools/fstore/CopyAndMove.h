#pragma once

#include <fstore/Session.h>

#include <foundation/storage/provider/ReplacementPolicy.h>

#include <string>
#include <vector>

namespace fstore {

/// Copies files and folder trees. Links are followed.
/// @param arguments  sources, then the destination: an existing folder to copy into, or the location
///                   that the copy gets
void copy(const Session& session, std::vector<std::string> arguments,
          foundation::storage::provider::ReplacementPolicy policy);

/// Moves files, folders and links (not what they lead to) within one store, in the same way.
void move(const Session& session, std::vector<std::string> arguments,
          foundation::storage::provider::ReplacementPolicy policy);

}  // namespace fstore
