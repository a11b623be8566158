#include <foundation/network/detail/PercentEncoding.h>

#include <fl/i18n/Convert.h>
#include <fl/i18n/Surrogates.h>

#include <algorithm>

namespace foundation::network::detail {
namespace {

void appendEscaped(std::u16string& out, std::u16string_view character) {
  constexpr char16_t digits[] = u"0123456789ABCDEF";
  for (const char c : fl::i18n::to_string(character)) {
    const auto byte = static_cast<unsigned char>(c);
    out.push_back(u'%');
    out.push_back(digits[byte >> 4]);
    out.push_back(digits[byte & 15]);
  }
}

/// How many code units the character at `at` takes.
std::size_t characterLength(std::u16string_view text, std::size_t at) { return fl::i18n::isPairAt(text, at) ? 2 : 1; }

bool isAllowedBeyondAsciiAt(std::u16string_view text, std::size_t at, std::size_t length, Allowed where) {
  return isAllowedBeyondAscii(length == 2 ? fl::i18n::pairAt(text, at) : char32_t{text[at]}, where);
}

bool isEscapeAt(std::u16string_view text, std::size_t at) {
  return at + 2 < text.size() && text[at] == u'%' && isAllowedAscii(text[at + 1], isHexDigit) &&
         isAllowedAscii(text[at + 2], isHexDigit);
}

}  // namespace

EncodingNotes appendEncoded(std::u16string& out, std::u16string_view plain, Allowed where) {
  EncodingNotes notes;
  std::size_t kept = 0;  // where the run of characters begins that are copied as they are
  for (std::size_t at = 0; at < plain.size();) {
    if (isAllowedAscii(plain[at], where)) {
      ++at;
      continue;
    }
    const auto length = characterLength(plain, at);
    if (plain[at] >= 0x80 && isAllowedBeyondAsciiAt(plain, at, length, where)) {
      notes.isAscii = false;
    } else {
      notes.hasEscapes = true;
      notes.hasLoneSurrogate = notes.hasLoneSurrogate || (length == 1 && fl::i18n::isSurrogate(plain[at]));
      out.append(plain, kept, at - kept);
      appendEscaped(out, plain.substr(at, length));
      kept = at + length;
    }
    at += length;
  }
  out.append(plain, kept, plain.size() - kept);
  return notes;
}

std::u16string decoded(std::u16string_view written) {
  std::u16string out;
  const auto escapes = static_cast<std::size_t>(std::count(written.begin(), written.end(), u'%'));
  out.reserve(written.size() - 2 * std::min(escapes, written.size() / 3));
  std::string bytes;
  for (std::size_t at = 0; at < written.size();) {
    // A run of escapes is one piece of UTF-8: a character may span several of them.
    bytes.clear();
    for (; isEscapeAt(written, at); at += 3)
      bytes.push_back(static_cast<char>(hexValue(written[at + 1]) << 4 | hexValue(written[at + 2])));
    fl::i18n::append_ustring(out, bytes);
    const auto next = std::min(written.find(u'%', at + (bytes.empty() ? 1 : 0)), written.size());
    out.append(written, at, next - at);
    at = next;
  }
  return out;
}

std::u16string asciiForm(std::u16string_view written) {
  std::u16string out;
  out.reserve(written.size() + 16);
  for (std::size_t at = 0; at < written.size();) {
    const auto length = characterLength(written, at);
    if (written[at] < 0x80)
      out.push_back(written[at]);
    else
      appendEscaped(out, written.substr(at, length));
    at += length;
  }
  return out;
}

}  // namespace foundation::network::detail
