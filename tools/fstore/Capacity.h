#pragma once

#include <fstore/Format.h>
#include <fstore/Session.h>

#include <string>
#include <vector>

namespace fstore {

enum class SizeStyle { Bytes, Short };

/// Prints how much the store of each argument holds, how much of that is occupied and how much is free. A store that
/// does not tell is reported.
void printCapacity(const Session& session, const std::vector<std::string>& arguments, SizeStyle style, Format format);

}  // namespace fstore
