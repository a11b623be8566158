#pragma once

#include <cstdint>

namespace foundation::storage::backend::archive::detail {

/// What an archive may ask of whoever reads it.
struct Limits {
  std::uint64_t entries = 1'000'000;
  std::uint64_t totalSize = std::uint64_t{1} << 40;  ///< in bytes, of what all entries have given
  std::uint64_t ratio = 100;                         ///< bytes given for each byte in the archive
  std::uint64_t nesting = 8;                         ///< archives around an entry

  /// What may be given, in bytes, before the ratio counts.
  static constexpr std::uint64_t freeOfRatio = std::uint64_t{1} << 20;
};

}  // namespace foundation::storage::backend::archive::detail
