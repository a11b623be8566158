#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace foundation::storage::testing {

/// One entry of a tar; what is optional stands in its header in place of the truth.
struct TarEntry {
  std::string name = {};  ///< what goes beyond 100 bytes is lost
  std::string content = {};
  char type = '0';
  std::string link = {};
  std::optional<std::string> sizeField = {};
  std::optional<std::string> timeField = {};
  std::optional<std::string> checksumField = {};
};

/// A number as tar headers hold it.
/// @param width  of the field, with the NUL at its end
inline std::string octal(std::uint64_t value, int width) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%0*llo", width - 1, static_cast<unsigned long long>(value));
  return text.data();
}

/// A number as GNU tar puts it where octal digits do not suffice: big-endian, behind a set bit.
/// @param fill  0x80 before a positive number, 0xFF before a negative one
inline std::string base256(std::uint64_t value, int width, char fill) {
  std::string field(static_cast<std::size_t>(width), fill == '\xFF' ? '\xFF' : '\0');
  field[0] = fill;
  for (int at = width - 1; at > width - 9; --at, value >>= 8)
    field[static_cast<std::size_t>(at)] = static_cast<char>(value & 0xFF);
  return field;
}

/// Puts the right checksum into a header.
inline void setChecksum(std::string& header) {
  header.replace(148, 8, 8, ' ');
  const auto sum = std::accumulate(header.begin(), header.end(), 0U,
                                   [](unsigned so, char byte) { return so + static_cast<unsigned char>(byte); });
  header.replace(148, 8, octal(sum, 7) + std::string("\0 ", 2));
}

/// One block of 512 bytes (POSIX.1-2017, pax, "ustar Interchange Format").
inline std::string tarHeader(const TarEntry& entry) {
  std::string header(512, '\0');
  const auto put = [&](std::size_t at, std::size_t width, const std::string& field) {
    header.replace(at, std::min(width, field.size()), field, 0, width);
  };
  put(0, 100, entry.name);
  put(100, 8, octal(0644, 8));
  put(108, 8, octal(1000, 8));
  put(116, 8, octal(1000, 8));
  put(124, 12, entry.sizeField.value_or(octal(entry.content.size(), 12)));
  put(136, 12, entry.timeField.value_or(octal(1'735'732'800, 12)));
  header[156] = entry.type;
  put(157, 100, entry.link);
  put(257, 8, std::string("ustar\00000", 8));
  setChecksum(header);
  put(148, 8, entry.checksumField.value_or(""));
  return header;
}

inline std::string tarBlocks(const TarEntry& entry) {
  auto content = entry.content;
  content.resize((content.size() + 511) / 512 * 512);
  return tarHeader(entry) + content;
}

/// With the two blocks of zeros at the end.
inline std::string tar(const std::vector<TarEntry>& entries) {
  std::string bytes;
  for (const auto& entry : entries)
    bytes += tarBlocks(entry);
  return bytes + std::string(1024, '\0');
}

/// One extended header record, "LENGTH KEY=VALUE\n".
inline std::string paxRecord(const std::string& key, const std::string& value) {
  const auto rest = " " + key + "=" + value + "\n";
  auto size = rest.size() + 1;
  while (std::to_string(size).size() + rest.size() != size)
    ++size;
  return std::to_string(size) + rest;
}

/// Says more of the entry that follows.
inline TarEntry pax(const std::vector<std::pair<std::string, std::string>>& records) {
  TarEntry header{.name = "pax", .type = 'x'};
  for (const auto& [key, value] : records)
    header.content += paxRecord(key, value);
  return header;
}

/// The name of the entry that follows, as GNU tar writes one of more than 100 bytes.
inline TarEntry longName(const std::string& name) {
  return {.name = "././@LongLink", .content = name + std::string(1, '\0'), .type = 'L'};
}

}  // namespace foundation::storage::testing
