#include <fl/i18n/Printable.h>

#include <fl/i18n/Convert.h>

namespace fl::i18n {

std::string to_printable(std::u16string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string out;
  for (const char c : to_string(text)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F)
      out.append({'\\', 'x', digits[byte >> 4], digits[byte & 15]});
    else
      out.push_back(c);
  }
  return out;
}

}  // namespace fl::i18n
