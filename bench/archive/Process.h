#pragma once

#include <string>
#include <vector>

namespace bench {

/// A program to start, found as a shell finds it.
struct Command {
  std::vector<std::string> words;
  std::string folder = "/";         ///< to start it in
  std::string input = "/dev/null";  ///< the file on its standard input
};

bool isInstalled(const std::string& program);

/// Runs a program to its end.
/// @return what it has written to standard output; standard error goes where this program's does
/// Throws `std::runtime_error` where it does not end with exit code 0, `std::system_error` where it cannot be started.
std::string outputOf(const Command& command);

}  // namespace bench
