#pragma once

#include <fstore/Commands.h>

#include <span>
#include <string>

namespace fstore {

// What the help text says, too.
extern const std::string programSummary;
extern const std::string locationHelp;
extern const std::string exitCodeHelp;

/// Adds what can stand before the operation to a parser.
void declareConfiguration(CLI::App& app);

/// The manual page in the language of man(7), out of what the operations say of themselves.
/// @param version  of the program
std::string manualPage(std::span<const Command> commands, const std::string& version);

}  // namespace fstore
