#pragma once

#include <string>
#include <vector>

namespace fstore {

/// Runs the program.
/// @param arguments  without the program's own name
/// @return the exit code: 0 done, 1 something failed, 2 wrong usage, 128 and a signal's number where that ended
///         the work
int run(const std::vector<std::string>& given);

}  // namespace fstore
