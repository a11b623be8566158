#pragma once

#include <foundation/storage/events/EntryType.h>

#include <cstdint>
#include <ctime>
#include <optional>

namespace foundation::storage::backend::local::detail {

/// What change detection has to know of an entry.
struct EntryState {
  events::EntryType type;             ///< links followed as far as they lead
  bool isLink;                        ///< whether the entry itself is a link
  std::optional<std::uint64_t> time;  ///< when what it leads to was last modified, as `toNumber` gives it
};

/// A point in time as a number that is the same only for the same time (of times less than 584 years apart).
constexpr std::uint64_t toNumber(const timespec& time) {
  return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(time.tv_nsec);
}

enum class Presence {
  Present,
  Absent,
  Unknown,  ///< the system does not say, for want of permission above all
};

struct Examined {
  Presence presence;
  EntryState state;  ///< means something only of what is present
};

/// Looks at an entry.
/// @param folder  a descriptor, or AT_FDCWD
/// @param path    relative to it
Examined examine(int folder, const char* path) noexcept;

/// Whether an error number says that nothing is at a path.
bool meansNothingThere(int error) noexcept;

}  // namespace foundation::storage::backend::local::detail
