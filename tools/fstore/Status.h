#pragma once

#include <fstore/Session.h>

#include <string>
#include <vector>

namespace fstore {

/// Prints what is known about each file or folder, one line an attribute.
void printStatus(const Session& session, const std::vector<std::string>& arguments);

}  // namespace fstore
