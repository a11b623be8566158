#pragma once

#include <string>
#include <vector>

namespace fstore {

/// Writes the files' content to standard output; returns the command's exit code.
int concatenate(const std::vector<std::string>& arguments);

/// Writes standard input to a file, which is created or replaced, or continued where `append` is set.
int put(const std::string& argument, bool append);

}  // namespace fstore
