#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// @file
/// The code units of UTF-16 that are no characters by themselves. Nothing here throws but for want of memory.

namespace fl::i18n {

/// Whether `unit` can be the first half of a pair, the second one, or either; its neighbours are not looked at.
/// @{
constexpr bool isHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }
constexpr bool isSurrogate(char16_t unit) { return (unit & 0xF800) == 0xD800; }
/// @}

/// Whether `unit`, standing alone, stands for one byte of a name that is not valid UTF-8.
constexpr bool isEscapedByte(char16_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }

/// The lone surrogate for a byte of a name that is not valid UTF-8.
/// @param byte  0x80 to 0xFF
constexpr char16_t escapedByte(unsigned byte) { return static_cast<char16_t>(0xDC00 | byte); }

/// Whether the code units at `at` and after it are one character beyond U+FFFF.
/// @param at  less than the text's length
constexpr bool isPairAt(std::u16string_view text, std::size_t at) {
  return isHighSurrogate(text[at]) && at + 1 < text.size() && isLowSurrogate(text[at + 1]);
}

/// The character at `at`, where `isPairAt` holds.
constexpr char32_t pairAt(std::u16string_view text, std::size_t at) {
  return 0x10000 + ((char32_t{text[at]} & 0x3FF) << 10 | (char32_t{text[at + 1]} & 0x3FF));
}

/// Appends a character, as one code unit or two.
/// @param codePoint  up to U+10FFFF
inline void appendCodePoint(std::u16string& out, char32_t codePoint) {
  if (codePoint < 0x10000) {
    out.push_back(static_cast<char16_t>(codePoint));
  } else {
    out.push_back(static_cast<char16_t>(0xD7C0 + (codePoint >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF)));
  }
}

}  // namespace fl::i18n
