#include <foundation/storage/backend/s3/detail/wire/XmlWriter.h>

#include <fl/i18n/Convert.h>
#include <fl/i18n/Surrogates.h>
#include <foundation/storage/backend/s3/detail/wire/Digest.h>
#include <foundation/storage/backend/s3/detail/wire/Documents.h>

namespace foundation::storage::backend::s3::detail::wire {

namespace {

/// The characters of XML 1.0 (section 2.2) in UTF-16, but for surrogates.
bool isXmlUnit(char16_t unit) {
  return unit == u'\t' || unit == u'\n' || unit == u'\r' || (unit >= 0x20 && unit < 0xFFFE);
}

bool isMarkup(char c) { return c == '&' || c == '<' || c == '>' || c == '"' || (c >= 0 && c < ' '); }

}  // namespace

bool canBeInXml(std::string_view key) {
  const auto text = fl::i18n::to_ustring(key);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isPair = fl::i18n::isPairAt(text, i);
    if (!isXmlUnit(text[i]) || (fl::i18n::isSurrogate(text[i]) && !isPair))
      return false;
    i += isPair ? 1 : 0;
  }
  return true;
}

std::string element(std::string_view name, std::string_view text) {
  std::string result;
  result.reserve(text.size() + 2 * name.size() + 5);
  result.append("<").append(name).append(">");
  for (const char c : text) {
    if (isMarkup(c))
      result.append("&#x").append(hex({&c, 1})).append(";");
    else
      result += c;
  }
  return result.append("</").append(name).append(">");
}

std::string rootTag(std::string_view name) {
  std::string tag(R"(<?xml version="1.0" encoding="UTF-8"?><)");
  return tag.append(name).append(R"( xmlns="http://s3.amazonaws.com/doc/2006-03-01/">)");
}

}  // namespace foundation::storage::backend::s3::detail::wire
