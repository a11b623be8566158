#pragma once

#include <cstddef>
#include <cstdint>

namespace foundation::network::detail {

/// The length of the longest text that offsets are kept for, in code units.
inline constexpr std::size_t maximalLength = (std::size_t{1} << 29) - 1;

/// Where the path of an IRI lies in its text, in code units, and what is known of it. The other
/// components are found by their delimiters when they are asked for: few are, and locations are kept by
/// the hundred thousand.
struct Parts {
  std::uint64_t pathBegin : 29 = 0;
  std::uint64_t pathEnd : 29 = 0;
  std::uint64_t hasScheme : 1 = false;
  std::uint64_t hasAuthority : 1 = false;
  std::uint64_t isAscii : 1 = true;
  std::uint64_t pathHasEscapes : 1 = false;
  /// The path is written as encoding its decoded form would write it.
  std::uint64_t pathIsCanonical : 1 = false;
  /// The path was given in plain text with lone surrogates, which its written form need not give back.
  std::uint64_t pathIsLossy : 1 = false;
};
static_assert(sizeof(Parts) == sizeof(std::uint64_t));

}  // namespace foundation::network::detail
