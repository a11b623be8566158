#pragma once

#include <foundation/storage/backend/archive/detail/Limits.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace foundation::storage::backend::archive::detail {

/// Counts what the entries of an archive have really given, whatever the archive says of their sizes. Any number
/// of threads may use it.
class Budget {
 public:
  Budget(const Limits& limits, std::size_t entries) : limits_(limits), given_(entries) {}

  /// Notes how much of an entry's content has come out; what came out before is not counted twice. Throws `Fault`
  /// where all entries together have given more than they may.
  void note(std::size_t entry, std::uint64_t bytes);

  /// Throws `Fault` where `produced` bytes came out of too few that were `consumed`.
  static void requireRatio(const Limits& limits, std::uint64_t produced, std::uint64_t consumed);

 private:
  const Limits limits_;
  std::vector<std::atomic<std::uint64_t>> given_;  ///< by each entry, at most
  std::atomic<std::uint64_t> total_ = 0;
};

}  // namespace foundation::storage::backend::archive::detail
