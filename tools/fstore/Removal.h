#pragma once

#include <fstore/Session.h>

#include <string>
#include <vector>

namespace fstore {

enum class RemovalDepth { FilesOnly, WholeFolders };

/// Removes files and links (not what they lead to), and, if so told, folders with all they hold. What
/// cannot be removed is reported, and stays with the folders around it; the rest is removed.
void remove(const Session& session, const std::vector<std::string>& arguments, RemovalDepth depth);

}  // namespace fstore
