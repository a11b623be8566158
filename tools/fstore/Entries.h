#pragma once

#include <string>
#include <vector>

namespace fstore {

/// The operations that change names. Each takes the command's arguments and returns its exit code.

/// "SOURCE... TARGET" as `transferEach` takes them.
/// @param noClobber  keeps what exists
int move(const std::vector<std::string>& arguments, bool noClobber);

/// Links are removed themselves, not what they lead to.
/// @param recursive  removes folders, too, with all they hold
int remove(const std::vector<std::string>& arguments, bool recursive);

/// @param withParents  creates missing folders above, and takes an existing folder for done
int makeFolders(const std::vector<std::string>& arguments, bool withParents);

}  // namespace fstore
