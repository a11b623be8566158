#include <fstore/Size.h>

#include <charconv>
#include <limits>

namespace fstore {
namespace {

constexpr std::string_view units = "KMGTPE";

/// @return how much one of `unit` is; 0 where there is no such unit
std::uint64_t factorOf(std::string_view unit) {
  if (unit.empty())
    return 1;
  const auto power = units.find(unit.front() == 'k' ? 'K' : unit.front());
  const auto rest = unit.substr(1);
  if (power == std::string_view::npos || !(rest.empty() || rest == "iB" || rest == "B"))
    return 0;
  std::uint64_t factor = 1;
  for (std::size_t i = 0; i <= power; ++i)
    factor *= rest == "B" ? 1000U : 1024U;
  return factor;
}

}  // namespace

std::optional<std::uint64_t> parseSize(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc())
    return std::nullopt;
  const auto factor = factorOf(text.substr(static_cast<std::size_t>(end - text.data())));
  if (factor == 0 || number > std::numeric_limits<std::uint64_t>::max() / factor)
    return std::nullopt;
  return number * factor;
}

std::string shortSize(std::uint64_t size) {
  if (size < 1024)
    return std::to_string(size);
  std::size_t unit = 0;
  std::uint64_t one = 1024;
  // What rounds up to 1024 of a unit is one of the next.
  while (unit + 1 < units.size() && size > one * 1023) {
    one *= 1024;
    ++unit;
  }
  const auto tenths = size / one * 10 + (size % one * 10 + one - 1) / one;
  const auto text = tenths < 100 ? std::to_string(tenths / 10) + "." + std::to_string(tenths % 10)
                                 : std::to_string(size / one + (size % one > 0 ? 1 : 0));
  return text + units[unit];
}

}  // namespace fstore
