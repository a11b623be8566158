#pragma once

#include <fstore/Commands.h>

#include <span>
#include <string>

namespace fstore {

/// A script by which bash completes operations, options, their values where these are few, and paths.
std::string completionScript(std::span<const Command> commands);

}  // namespace fstore
