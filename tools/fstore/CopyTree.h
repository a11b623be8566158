#pragma once

#include <string>
#include <vector>

namespace fstore {

/// Copies files and whole folders; "SOURCE... TARGET" as `transferEach` takes them. Links are followed.
/// What cannot be copied is reported, and the rest is copied all the same. Returns the exit code.
/// @param noClobber  keeps existing files
int copy(const std::vector<std::string>& arguments, bool noClobber);

}  // namespace fstore
