#pragma once

#include <string>
#include <vector>

namespace fstore {

/// Runs the program.
/// @param arguments  without the program's own name
/// @return the exit code: 0 done, 1 something failed, 2 wrong usage
int run(const std::vector<std::string>& arguments);

}  // namespace fstore
