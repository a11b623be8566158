#pragma once

#include "disk/Data.h"

#include <cstddef>
#include <string>

/// The archives that are worked on; the same in every run. Python makes them.
namespace bench {

/// How much work there is.
struct Amounts {
  std::size_t listed = 100'000;    ///< entries
  std::size_t large = 1'024;       ///< entries of 1 MiB
  std::size_t extracted = 10'000;  ///< entries
  std::size_t nested = 86;         ///< entries of 1 MiB, which deflated make 64 MiB
};

Amounts smallAmounts();

// Each of these makes its files in the space where they are not there yet, and throws `std::runtime_error`.

/// A zip of so many small entries in its root.
std::string listedZip(const Space& space, std::size_t entries);
/// What there is to be found in it.
Tally listedTally(std::size_t entries);

/// An archive, and what is to come out of it.
struct Sample {
  std::string path;
  std::string name;      ///< of an entry
  std::string expected;  ///< its content, or that of all entries where there is no name
};

/// A zip of entries of 1 MiB, of which every other one is deflated.
/// @param isDeflated  whether the entry of the sample, the last or the last but one, is
Sample largeZip(const Space& space, std::size_t entries, bool isDeflated);

/// Entries of 0 to 8 KiB, deflated.
Sample smallEntriesZip(const Space& space, std::size_t entries);
/// The same.
Sample smallEntriesTarGz(const Space& space, std::size_t entries);

/// A zip with a zip of entries of 1 MiB, all deflated, which is called "inner.zip". The sample's entry is one of that.
/// @param isDeflated  whether the inner zip is deflated once more
Sample nestedZip(const Space& space, std::size_t entries, bool isDeflated);

}  // namespace bench
