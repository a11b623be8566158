#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The inputs that every peer is given; the same in every run.
namespace bench {

inline constexpr std::size_t locationCount = 100'000;

/// A location in UTF-8, spelt in two ways.
struct Spelling {
  std::string shown;    ///< non-ASCII characters as they are
  std::string escaped;  ///< non-ASCII characters percent-escaped
};

/// Distinct locations of 60 to 120 characters: local files, objects of a store, and a third with
/// non-ASCII characters and escaped blanks.
const std::vector<Spelling>& locations();

/// Distinct names of 20 to 40 characters, in UTF-8; a fifth need escaping.
const std::vector<std::string>& names();

/// The folder that children are made in.
inline const std::string folderText = "file:///srv/archive/projects/2024/quarterly-accounts/incoming/to-be-checked";

}  // namespace bench
