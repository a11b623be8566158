#include <fl/i18n/Convert.h>

#include <fl/i18n/Surrogates.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace fl::i18n {
namespace {

constexpr char32_t invalid = 0xFFFFFFFF;

unsigned byteAt(std::string_view bytes, std::size_t at) { return static_cast<unsigned char>(bytes[at]); }

bool isContinuation(std::string_view bytes, std::size_t at) {
  return at < bytes.size() && (byteAt(bytes, at) & 0xC0) == 0x80;
}

struct Decoded {
  char32_t codePoint;  ///< or `invalid`
  std::size_t length;  ///< in bytes
};

/// The sequence of two to four bytes at `at`; table 3-7 of The Unicode Standard says which are valid.
Decoded decodeSequence(std::string_view bytes, std::size_t at) {
  const unsigned lead = byteAt(bytes, at);
  const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (length == 0)
    return {invalid, 1};
  char32_t codePoint = lead & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(bytes, at + i))
      return {invalid, 1};
    codePoint = codePoint << 6 | (byteAt(bytes, at + i) & 0x3F);
  }
  const bool overlong = (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
  if (overlong || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint < 0xE000))
    return {invalid, 1};
  return {codePoint, length};
}

void appendUtf8(std::string& out, char32_t codePoint) {
  const auto push = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (codePoint < 0x80) {
    push(codePoint);
  } else if (codePoint < 0x800) {
    push(0xC0 | codePoint >> 6);
    push(0x80 | (codePoint & 0x3F));
  } else if (codePoint < 0x10000) {
    push(0xE0 | codePoint >> 12);
    push(0x80 | (codePoint >> 6 & 0x3F));
    push(0x80 | (codePoint & 0x3F));
  } else {
    push(0xF0 | codePoint >> 18);
    push(0x80 | (codePoint >> 12 & 0x3F));
    push(0x80 | (codePoint >> 6 & 0x3F));
    push(0x80 | (codePoint & 0x3F));
  }
}

/// How many units of `text` from `at` on are ASCII, which nearly all are in nearly all names.
template <class Unit>
std::size_t countAscii(std::basic_string_view<Unit> text, std::size_t at) {
  constexpr std::size_t step = sizeof(std::uint64_t) / sizeof(Unit);
  constexpr std::uint64_t beyondAscii = sizeof(Unit) == 1 ? 0x8080808080808080 : 0xFF80FF80FF80FF80;
  const auto begin = at;
  for (std::uint64_t units = 0; at + step <= text.size(); at += step) {
    std::memcpy(&units, text.data() + at, sizeof units);
    if ((units & beyondAscii) != 0)
      break;
  }
  while (at < text.size() && static_cast<std::make_unsigned_t<Unit>>(text[at]) < 0x80)
    ++at;
  return at - begin;
}

/// Appends ASCII as it is, in units of the other size.
template <class To, class From>
void appendAscii(std::basic_string<To>& out, std::basic_string_view<From> text) {
  const auto size = out.size();
  out.resize(size + text.size());
  for (std::size_t i = 0; i < text.size(); ++i)
    out[size + i] = static_cast<To>(text[i]);
}

}  // namespace

void append_ustring(std::u16string& out, std::string_view bytes) {
  out.reserve(out.size() + bytes.size());
  for (std::size_t at = 0; at < bytes.size();) {
    if (const auto count = countAscii(bytes, at); count > 0) {
      appendAscii(out, bytes.substr(at, count));
      at += count;
      continue;
    }
    const unsigned lead = byteAt(bytes, at);
    const auto [codePoint, length] = decodeSequence(bytes, at);
    appendCodePoint(out, codePoint == invalid ? escapedByte(lead) : codePoint);
    at += length;
  }
}

void append_string(std::string& out, std::u16string_view text) {
  out.reserve(out.size() + text.size());
  for (std::size_t at = 0; at < text.size();) {
    const char16_t unit = text[at];
    if (const auto count = countAscii(text, at); count > 0) {
      appendAscii(out, text.substr(at, count));
      at += count;
    } else if (isPairAt(text, at)) {
      appendUtf8(out, pairAt(text, at));
      at += 2;
    } else {
      if (isEscapedByte(unit))
        out.push_back(static_cast<char>(unit & 0xFF));
      else
        appendUtf8(out, unit);
      ++at;
    }
  }
}

std::u16string to_ustring(std::string_view bytes) {
  std::u16string out;
  append_ustring(out, bytes);
  return out;
}

std::string to_string(std::u16string_view text) {
  std::string out;
  append_string(out, text);
  return out;
}

}  // namespace fl::i18n
