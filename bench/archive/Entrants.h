#pragma once

#include "archive/Process.h"
#include "archive/Workloads.h"

#include <functional>
#include <string>

namespace bench {

/// The location of an archive's root or entry, as our command takes it.
/// @param name  without anything to be escaped
std::string locationIn(const std::string& scheme, const std::string& path, const std::string& name);

/// One that gives bytes, which have to be the expected ones.
Entrant giving(std::string name, std::function<std::string()> run, const std::string& expected);

/// The same by a whole program; adds it to `workload` where the program is there, and a note where it is not.
void addProgram(Workload& workload, const std::string& name, const Command& command, const std::string& expected);

/// The same with what is to be found in the output.
void addProgram(Workload& workload, const std::string& name, const Command& command,
                const std::function<void(const std::string& output)>& check);

}  // namespace bench
