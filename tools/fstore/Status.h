#pragma once

#include <fstore/Format.h>
#include <fstore/Session.h>

#include <string>
#include <vector>

namespace fstore {

/// Prints what is known about each file or folder, one line an attribute. In JSON it says "existence"
/// beside what a listing says.
void printStatus(const Session& session, const std::vector<std::string>& arguments, Format format);

}  // namespace fstore
