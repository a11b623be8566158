#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// The least that reading a zip takes, by hand (APPNOTE.TXT, sections 4.3.7, 4.3.12 and 4.3.16): for well-formed
/// archives of less than 4 GiB, and without checking anything.
namespace bench {

/// Something to read anywhere.
struct Bytes {
  std::uint64_t size;
  std::function<void(std::uint64_t position, char* buffer, std::size_t count)> read;
};

struct HandEntry {
  std::string name;
  std::uint64_t size;
  std::uint64_t compressed;
  std::uint64_t header;  ///< where the local header begins
  bool isDeflated;
};

Bytes fileBytes(const std::string& path);
Bytes memoryBytes(std::string content);

/// What the central directory says, in its order.
std::vector<HandEntry> entriesOf(const Bytes& archive);
/// Throws `std::runtime_error` where there is none of that name.
HandEntry entryOf(const Bytes& archive, const std::string& name);

std::string contentOf(const Bytes& archive, const HandEntry& entry);
/// Of an entry that is stored: where it lies.
Bytes storedBytes(const Bytes& archive, const HandEntry& entry);

}  // namespace bench
