#pragma once

#include <array>
#include <cstdint>
#include <string_view>

/// Which characters RFC 3986 (section 3) and RFC 3987 (section 2.2) allow where.
namespace foundation::network::detail {

/// A set of components, as bits.
using Allowed = std::uint8_t;
inline constexpr Allowed inScheme = 1;
inline constexpr Allowed inUserInfo = 2;
inline constexpr Allowed inHost = 4;
inline constexpr Allowed inPath = 8;
inline constexpr Allowed inQuery = 16;  ///< and in a fragment, but for the private-use characters
inline constexpr Allowed inFragment = 32;
inline constexpr Allowed isHexDigit = 64;
/// In a path that follows a scheme without a '/': the texts of other IRIs are embedded there, so the
/// brackets of their hosts are allowed, which RFC 3986 does not do.
inline constexpr Allowed inOpaquePath = 128;

inline constexpr auto asciiCharacters = [] {
  std::array<Allowed, 128> table{};
  const auto allow = [&table](std::string_view characters, int where) {
    for (const char c : characters) {
      auto& entry = table[static_cast<unsigned char>(c)];
      entry = static_cast<Allowed>(entry | where);
    }
  };
  const std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  const std::string_view digits = "0123456789";
  const int anywhere = inUserInfo | inHost | inPath | inOpaquePath | inQuery | inFragment;
  allow(letters, anywhere | inScheme);
  allow(digits, anywhere | inScheme | isHexDigit);
  allow("ABCDEFabcdef", isHexDigit);
  allow("+-.", inScheme);
  allow("-._~", anywhere);
  allow("!$&'()*+,;=", anywhere);
  allow(":", inUserInfo | inPath | inOpaquePath | inQuery | inFragment);
  allow("@/", inPath | inOpaquePath | inQuery | inFragment);
  allow("[]", inOpaquePath);
  allow("?", inQuery | inFragment);
  return table;
}();

constexpr bool isAllowedAscii(char16_t unit, Allowed where) {
  return unit < 128 && (asciiCharacters[unit] & where) != 0;
}

constexpr bool isAsciiLetter(char16_t unit) { return (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z'; }

/// Non-ASCII characters that may stand unescaped. Noncharacters and, by RFC 3987 section 4.1, the
/// characters that only steer the direction of text may not.
constexpr bool isAllowedBeyondAscii(char32_t c, Allowed where) {
  if (c < 0xE000) {
    const bool steersDirection = c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E);
    return c >= 0xA0 && c < 0xD800 && !steersDirection;
  }
  const bool isPrivate = c < 0xF900 || c >= 0xF0000;
  if (isPrivate)
    return where == inQuery && (c < 0xF900 || (c & 0xFFFF) <= 0xFFFD);
  if (c < 0x10000)
    return c <= 0xFDCF || (c >= 0xFDF0 && c <= 0xFFEF);
  return (c & 0xFFFF) <= 0xFFFD && (c < 0xE0000 || c >= 0xE1000);
}

/// The value of a hexadecimal digit.
constexpr unsigned hexValue(char16_t digit) { return digit <= u'9' ? digit - u'0' : (digit | 0x20u) - u'a' + 10u; }

}  // namespace foundation::network::detail
