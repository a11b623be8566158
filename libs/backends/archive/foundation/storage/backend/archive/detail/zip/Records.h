#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// What a zip is made of, down to its bytes; see APPNOTE.TXT 6.3.10 of PKWARE:
/// 4.3.7 (local headers), 4.3.9 (data descriptors), 4.3.12 (directory), 4.3.14 to 4.3.16 (its end), 4.5.3 (zip64).
namespace foundation::storage::backend::archive::detail::zip {

// Signatures, and the sizes of the parts that come before names and extra fields.
inline constexpr std::uint32_t localHeaderSignature = 0x04034b50;
inline constexpr std::uint32_t descriptorSignature = 0x08074b50;
inline constexpr std::uint32_t directorySignature = 0x02014b50;
inline constexpr std::uint32_t endSignature = 0x06054b50;
inline constexpr std::uint32_t end64Signature = 0x06064b50;
inline constexpr std::uint32_t end64LocatorSignature = 0x07064b50;
inline constexpr std::size_t localHeaderSize = 30;
inline constexpr std::size_t directoryRecordSize = 46;
inline constexpr std::size_t endSize = 22;
inline constexpr std::size_t end64Size = 56;
inline constexpr std::size_t end64LocatorSize = 20;

/// What a field holds whose value is in the zip64 extra field.
inline constexpr std::uint32_t inZip64 = 0xFFFFFFFF;
inline constexpr std::uint16_t countInZip64 = 0xFFFF;

// General purpose flags (4.4.4) and compression methods (4.4.5).
inline constexpr std::uint16_t flagEncrypted = 1U << 0;
inline constexpr std::uint16_t flagDescriptor = 1U << 3;
inline constexpr std::uint16_t flagStronglyEncrypted = 1U << 6;
inline constexpr std::uint16_t flagUtf8 = 1U << 11;
inline constexpr std::uint16_t flagMasked = 1U << 13;
inline constexpr std::uint16_t methodStored = 0;
inline constexpr std::uint16_t methodDeflated = 8;

// Versions that are needed to extract (4.4.3), and who made an entry (4.4.2).
inline constexpr std::uint16_t versionDeflate = 20;
inline constexpr std::uint16_t versionZip64 = 45;
inline constexpr std::uint8_t madeByDos = 0;
inline constexpr std::uint8_t madeByUnix = 3;
inline constexpr std::uint8_t madeByMac = 19;

// Extra fields (4.5.2, 4.6.1).
inline constexpr std::uint16_t extraZip64 = 0x0001;
inline constexpr std::uint16_t extraNtfsTimes = 0x000a;
inline constexpr std::uint16_t extraUnixTimes = 0x5455;
inline constexpr std::uint16_t extraUnicodePath = 0x7075;

/// A number of `Number`'s size, little end first. `bytes` has to be that long.
template <class Number>
Number readNumber(std::string_view bytes, std::size_t position) {
  std::uint64_t number = 0;
  for (std::size_t i = sizeof(Number); i > 0; --i)
    number = number << 8 | static_cast<std::uint8_t>(bytes[position + i - 1]);
  return static_cast<Number>(number);
}

template <class Number>
void appendNumber(std::string& bytes, Number number) {
  auto rest = static_cast<std::uint64_t>(number);
  for (std::size_t i = 0; i < sizeof(Number); ++i, rest >>= 8)
    bytes += static_cast<char>(rest & 0xFF);
}

template <class Number>
void putNumber(std::string& bytes, std::size_t position, Number number) {
  auto rest = static_cast<std::uint64_t>(number);
  for (std::size_t i = 0; i < sizeof(Number); ++i, rest >>= 8)
    bytes[position + i] = static_cast<char>(rest & 0xFF);
}

}  // namespace foundation::storage::backend::archive::detail::zip
