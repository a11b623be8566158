#pragma once

#include "support/Deflate.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace foundation::storage::testing {

/// A number as it lies in a zip: little-endian.
/// @param count  of bytes
inline std::string littleEndian(std::uint64_t value, int count) {
  std::string bytes;
  for (; count > 0; --count, value >>= 8)
    bytes.push_back(static_cast<char>(value & 0xFF));
  return bytes;
}
inline std::string word(std::uint64_t value) { return littleEndian(value, 2); }
inline std::string doubleWord(std::uint64_t value) { return littleEndian(value, 4); }
inline std::string quadWord(std::uint64_t value) { return littleEndian(value, 8); }

/// One entry of a zip, true unless told to lie: what is optional stands in the headers in place of the truth.
struct ZipEntry {
  std::string name = {};
  std::string content = {};
  std::uint16_t method = 0;                          ///< 8 deflates the content; with any other it lies there as it is
  std::uint32_t mode = 0100644;                      ///< as in stat(2)
  std::uint16_t flags = 0;                           ///< bit 0 means encrypted
  std::string extra = {};                            ///< extra fields, in the directory
  std::optional<std::string> data = {};              ///< what lies there instead of the content
  std::optional<std::uint32_t> crc = {};             ///< in both headers
  std::optional<std::uint32_t> compressedSize = {};  ///< in both headers
  std::optional<std::uint32_t> size = {};            ///< in both headers
  std::optional<std::string> localName = {};
  std::optional<std::uint16_t> localMethod = {};
  std::optional<std::uint32_t> localSignature = {};
  std::optional<std::uint32_t> offset = {};  ///< of the local header, in the directory
  std::uint16_t disk = 0;
  bool hasLocalHeader = true;  ///< otherwise it is only in the directory
};

/// What is said at the end of a zip of more than 32 bits.
struct Zip64End {
  std::optional<std::uint64_t> entries = {};
  std::optional<std::uint64_t> directorySize = {};
  std::optional<std::uint64_t> directoryOffset = {};
  std::optional<std::uint64_t> position = {};  ///< of the record, as the locator says it
  std::string data = {};                       ///< between the record and the locator
  std::uint32_t disk = 0;
};

/// What is said at the end of a zip, in place of the truth.
struct ZipEnd {
  std::optional<std::uint16_t> entries = {};
  std::optional<std::uint32_t> directorySize = {};
  std::optional<std::uint32_t> directoryOffset = {};
  std::uint16_t disk = 0;
  std::string comment = {};
  std::optional<std::uint16_t> commentSize = {};
  std::optional<Zip64End> zip64 = {};
  bool isThere = true;
};

/// Lays a zip out, byte by byte (APPNOTE.TXT 6.3.10 by PKWARE, 4.3).
class ZipBuilder {
 public:
  ZipBuilder& add(const ZipEntry& entry) {
    const auto data = entry.data.value_or(entry.method == 8 ? deflated(entry.content) : entry.content);
    const auto offset = entry.offset.value_or(static_cast<std::uint32_t>(bytes_.size()));
    const auto sizes = doubleWord(entry.crc.value_or(crcOf(entry.content))) +
                       doubleWord(entry.compressedSize.value_or(data.size())) +
                       doubleWord(entry.size.value_or(entry.content.size()));
    if (entry.hasLocalHeader)
      bytes_ += localHeader(entry, sizes) + data;
    directory_ += doubleWord(0x02014B50) + word(3 << 8 | 45) + word(45) + word(entry.flags) + word(entry.method) +
                  doubleWord(someTime) + sizes + word(entry.name.size()) + word(entry.extra.size()) + word(0) +
                  word(entry.disk) + word(0) + doubleWord(std::uint64_t{entry.mode} << 16) + doubleWord(offset) +
                  entry.name + entry.extra;
    ++count_;
    return *this;
  }

  std::string finish(const ZipEnd& end) const {
    auto bytes = bytes_ + directory_;
    if (end.zip64)
      bytes += zip64End(*end.zip64, bytes.size());
    if (!end.isThere)
      return bytes;
    const auto count = word(end.entries.value_or(count_));
    return bytes + doubleWord(0x06054B50) + word(end.disk) + word(end.disk) + count + count +
           doubleWord(end.directorySize.value_or(directory_.size())) +
           doubleWord(end.directoryOffset.value_or(bytes_.size())) +
           word(end.commentSize.value_or(end.comment.size())) + end.comment;
  }

 private:
  static constexpr std::uint32_t someTime = 0x5A21'6000;  ///< 1 January 2025, 12:00

  static std::string localHeader(const ZipEntry& entry, const std::string& sizes) {
    const auto& name = entry.localName.value_or(entry.name);
    return doubleWord(entry.localSignature.value_or(0x04034B50)) + word(20) + word(entry.flags) +
           word(entry.localMethod.value_or(entry.method)) + doubleWord(someTime) + sizes + word(name.size()) + word(0) +
           name;
  }

  std::string zip64End(const Zip64End& end, std::uint64_t position) const {
    const auto count = quadWord(end.entries.value_or(count_));
    return doubleWord(0x06064B50) + quadWord(44 + end.data.size()) + word(45) + word(45) + doubleWord(end.disk) +
           doubleWord(end.disk) + count + count + quadWord(end.directorySize.value_or(directory_.size())) +
           quadWord(end.directoryOffset.value_or(bytes_.size())) + end.data + doubleWord(0x07064B50) + doubleWord(0) +
           quadWord(end.position.value_or(position)) + doubleWord(1);
  }

  std::string bytes_;
  std::string directory_;
  std::size_t count_ = 0;
};

inline std::string zip(const std::vector<ZipEntry>& entries, const ZipEnd& end = {}) {
  ZipBuilder builder;
  for (const auto& entry : entries)
    builder.add(entry);
  return builder.finish(end);
}

/// The extra field for sizes and offsets of 64 bits: those whose 32 bits are all set, in the order size, compressed
/// size, offset.
inline std::string zip64Extra(const std::vector<std::uint64_t>& values) {
  std::string bytes = word(1) + word(8 * values.size());
  for (const auto value : values)
    bytes += quadWord(value);
  return bytes;
}

}  // namespace foundation::storage::testing
