#include <fl/i18n/Case.h>

#include <fl/i18n/Surrogates.h>

#include <unicode/uchar.h>

namespace fl::i18n {

char32_t to_lower::operator()(char32_t codePoint) const {
  if (codePoint < 0x80)
    return codePoint >= U'A' && codePoint <= U'Z' ? codePoint + 0x20 : codePoint;
  return static_cast<char32_t>(u_tolower(static_cast<UChar32>(codePoint)));
}

namespace detail {

std::u16string transform(std::u16string_view text, const to_lower& mapping) {
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool pair = isPairAt(text, at);
    if (isSurrogate(text[at]) && !pair) {
      out.push_back(text[at]);
      continue;
    }
    appendCodePoint(out, mapping(pair ? pairAt(text, at) : char32_t{text[at]}));
    at += pair ? 1 : 0;
  }
  return out;
}

}  // namespace detail
}  // namespace fl::i18n
