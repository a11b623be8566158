#pragma once

#include <fstore/Format.h>
#include <fstore/Session.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace fstore {

enum class EntryKind { File, Folder, Link };

/// Sizes that are looked for.
struct SizeBound {
  enum class Relation { Equal, Above, Below };
  Relation relation;
  std::uint64_t size;  ///< in bytes
};

/// `N`, `+N` (above) or `-N` (below), where N is a size as `parseSize` takes it; none where it is anything else.
std::optional<SizeBound> parseSizeBound(std::string_view text);

/// Which entries to print: those that all of it fits.
struct FindOptions {
  std::optional<std::string> name;  ///< a wildcard; letters of both cases are one where the store takes them so
  std::optional<EntryKind> kind;
  std::optional<SizeBound> size;     ///< fits files only
  std::optional<std::string> newer;  ///< a time, or what to look for later changes than
  std::size_t maxDepth;              ///< 0: only the argument itself
  Format format = Format::Text;
};

/// Prints a line for the argument and for each entry below it, to any depth. A path is printed for a path, a location
/// for a location.
void find(const Session& session, const std::string& argument, const FindOptions& options);

}  // namespace fstore
