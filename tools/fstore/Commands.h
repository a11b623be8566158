#pragma once

#include <fstore/Session.h>

#include <CLI/CLI.hpp>

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace fstore {

/// Does an operation with the locations that it was given.
using Action = std::function<void(const Session&, const std::vector<std::string>& locations)>;

/// One operation of the program.
struct Command {
  std::string name;
  std::string usage;  ///< what follows the name
  std::string summary;
  std::size_t least;  ///< how few locations it takes
  std::size_t most;
  /// Adds the operation's options to a parser. The action is to be called after
  /// parsing, while the parser lives.
  std::function<Action(CLI::App&)> declare;
};

/// All of them, in the order of the help text.
std::span<const Command> commands();

}  // namespace fstore
