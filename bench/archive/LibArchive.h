#pragma once

#include "disk/Peer.h"

#include <string>

/// What a program would write that uses libarchive itself.
namespace bench {

/// `entries`, `nameLength` and `bytes`. These throw `std::runtime_error`.
Tally libArchiveTally(const std::string& path);
std::string libArchiveContent(const std::string& path, const std::string& name);
/// The contents of all entries, one after the other.
std::string libArchiveContents(const std::string& path);

}  // namespace bench
