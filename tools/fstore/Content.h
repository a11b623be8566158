#pragma once

#include <fstore/Session.h>

#include <foundation/storage/provider/ByteStreamOpenOptions.h>

#include <string>
#include <vector>

namespace fstore {

/// Writes the content of files to standard output.
void printContent(const Session& session, const std::vector<std::string>& arguments);

/// Writes standard input to a file, which is created where it is missing. Nothing happens to the file
/// where standard input cannot be read at all.
/// @param existing  what to do with the content that the file has
void putContent(const Session& session, const std::string& argument,
                foundation::storage::provider::ByteStreamTruncate existing);

}  // namespace fstore
