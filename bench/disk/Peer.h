#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

using Paths = std::vector<std::string>;

/// What a listing has found; sums, so that nobody gets by without looking at each entry.
struct Tally {
  std::size_t entries = 0;
  std::size_t files = 0;
  std::size_t nameLength = 0;
  std::uint64_t bytes = 0;
  std::int64_t modified = 0;  ///< seconds since 1970

  bool operator==(const Tally&) const = default;
};

/// Thrown by a peer that finds out that it cannot do a thing; it is left out then, and the text is shown.
struct Skipped : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// How one program goes about the work. It may leave out what it has nothing for. What fails throws.
/// Those that return a function make what they need (locations, paths in their own form) when they are called, which
/// is not timed; what is timed is the function.
struct Peer {
  using Job = std::function<void(std::size_t number)>;
  using Copier = std::function<Job(const Paths& from, const Paths& to)>;
  using Replacer = std::function<std::function<void(const std::string& content)>(const std::string& folder,
                                                                                 const std::string& name)>;

  std::string name;
  std::function<Tally(const std::string& folder)> listNames{};       ///< `entries` and `nameLength`
  std::function<Tally(const std::string& folder)> listAttributes{};  ///< all of the tally
  std::function<Tally(const std::string& folder)> walk{};            ///< `entries` and `files`
  Copier copy{};                                                     ///< the file of that number
  Copier copySparse{};                                               ///< the same, holes stay holes
  Replacer replace{};         ///< in one step: everybody sees the old content or the new
  Replacer replaceDurably{};  ///< the same, and the content is on the disk afterwards
  /// @return the number of bytes read
  std::function<std::size_t(const std::string& path, char* buffer, std::size_t block)> read{};
  std::function<void(const std::string& folder)> removeTree{};
  bool copySyncs = false;     ///< whether `copy` has each copy written to the disk
  bool replaceSyncs = false;  ///< the same of `replace`
};

/// Adds a peer when the program starts.
bool add(Peer peer);

/// Ours, the limit, and the others.
const std::vector<Peer>& peers();

}  // namespace bench
