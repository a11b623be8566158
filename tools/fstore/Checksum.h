#pragma once

#include <fstore/Format.h>
#include <fstore/Session.h>

#include <string>
#include <vector>

namespace fstore {

/// Prints the SHA-256 of files (FIPS 180-4) in the form of sha256sum(1): 64 digits, two blanks and the argument. Where
/// that holds a backslash, a line feed or a carriage return, these are written `\\`, `\n` and `\r`, and the line begins
/// with a backslash.
void printChecksums(const Session& session, const std::vector<std::string>& arguments, Format format);

}  // namespace fstore
