#pragma once

#include <fstore/CopyOptions.h>
#include <fstore/Session.h>

#include <foundation/storage/provider/ReplacementPolicy.h>

#include <string>
#include <vector>

namespace fstore {

/// Copies files and folder trees. Links are followed.
///
/// Signals (`StopSignal`) end it between two files or in the middle of one. With `TransactionPolicy::Atomic` nothing is
/// half written then; otherwise the file that is gets reported. The exit code tells the signal.
/// @param arguments  sources, then the destination: an existing folder to copy into, or the location
///                   that the copy gets
void copy(const Session& session, const std::vector<std::string>& arguments, const CopyOptions& options);

/// Moves files, folders and links (not what they lead to) within one store. A signal ends it after the move that is
/// under way.
void move(const Session& session, std::vector<std::string> arguments,
          foundation::storage::provider::ReplacementPolicy policy);

}  // namespace fstore
