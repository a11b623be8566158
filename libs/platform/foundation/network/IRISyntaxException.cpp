#include <foundation/network/IRISyntaxException.h>

#include <fl/i18n/Convert.h>

namespace foundation::network {
namespace {

/// In UTF-8, with control characters spelt out: the text may be anything, and the description is one line.
std::string printable(const std::u16string& text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string out;
  for (const char c : fl::i18n::to_string(text)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F)
      out.append({'\\', 'x', digits[byte >> 4], digits[byte & 15]});
    else
      out.push_back(c);
  }
  return out;
}

std::string describe(const std::u16string& text, std::size_t offset, const std::string& reason) {
  return "'" + printable(text) + "' is not a valid IRI: at offset " + std::to_string(offset) + ", " + reason + ".";
}

}  // namespace

IRISyntaxException::IRISyntaxException(std::u16string text, std::size_t offset, std::string reason)
    : std::runtime_error(describe(text, offset, reason)),
      text_(std::move(text)),
      offset_(offset),
      reason_(std::move(reason)) {}

IRISyntaxException::~IRISyntaxException() = default;

std::u16string IRISyntaxException::ToUstringImpl() const { return fl::i18n::to_ustring(what()); }

}  // namespace foundation::network
