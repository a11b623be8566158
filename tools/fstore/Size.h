#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Numbers of bytes, as people write them.
namespace fstore {

/// The number that `text` names: digits, and behind them, if at all, one of K, M, G, T, P, E (powers of 1024, also
/// written KiB and so on) or KB, MB and so on (powers of 1000). None where it is something else or does not fit.
std::optional<std::uint64_t> parseSize(std::string_view text);

/// `size` with one such letter, rounded up to two digits at least: "0", "1023", "1.1K", "12M".
std::string shortSize(std::uint64_t size);

}  // namespace fstore
