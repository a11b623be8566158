#pragma once

#include <foundation/storage/backend/archive/detail/Entry.h>
#include <foundation/storage/backend/archive/detail/zip/Times.h>

#include <cstdint>
#include <string_view>

namespace foundation::storage::backend::archive::detail::zip {

/// What a record of the directory says beyond what every entry has.
struct Member {
  std::string_view record;         ///< as it is stored, comment included
  std::uint64_t headerPosition{};  ///< of the local header in the file
  std::uint64_t compressedSize{};
  std::uint64_t size{};
  std::uint32_t crc{};
  std::uint16_t method{};
  std::uint16_t flags{};
  bool isOverlapped = false;  ///< by another entry: no honest program writes such, but bombs are made of it
};

/// Reads the record at the beginning of `directory`, and removes it from there. Throws `Fault` where none is there.
/// @param base  added to its position
void takeRecord(std::string_view& directory, std::uint64_t base, TimeReader& times, Entry& entry, Member& member);

}  // namespace foundation::storage::backend::archive::detail::zip
