#pragma once

#include <cstdint>

namespace foundation::network::detail {

/// Where the components of an IRI lie in its text, in code units. What is not stored follows from the
/// delimiters: the authority lies between "//" and the path, the query begins after a '?' at
/// `pathEnd`, the fragment after a '#' at `queryEnd`.
struct Parts {
  std::uint32_t schemeEnd = 0;  ///< where the ':' stands; 0: there is no scheme
  std::uint32_t hostBegin = 0;
  std::uint32_t hostEnd = 0;
  std::uint32_t pathBegin = 0;
  std::uint32_t pathEnd = 0;
  std::uint32_t queryEnd = 0;  ///< equals `pathEnd` where there is no query
  bool hasAuthority = false;
  bool isAscii = true;
  bool pathHasEscapes = false;
};

}  // namespace foundation::network::detail
