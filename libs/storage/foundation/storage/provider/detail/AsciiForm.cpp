#include <foundation/storage/provider/detail/AsciiForm.h>

#include <fl/i18n/Convert.h>
#include <fl/i18n/Surrogates.h>

#include <string>

namespace foundation::storage::provider::detail {
namespace {

/// Gives the code units of a text's ASCII form one by one.
class AsciiUnits {
 public:
  explicit AsciiUnits(std::u16string_view text) : text_(text) {}

  bool hasNext() const { return at_ < text_.size() || pending_ < escaped_.size(); }

  char16_t next() {
    if (pending_ < escaped_.size())
      return static_cast<unsigned char>(escaped_[pending_++]);
    if (text_[at_] < 0x80)
      return text_[at_++];
    escapeCharacter();
    return static_cast<unsigned char>(escaped_[pending_++]);
  }

 private:
  void escapeCharacter() {
    constexpr char digits[] = "0123456789ABCDEF";
    const std::size_t length = fl::i18n::isPairAt(text_, at_) ? 2 : 1;
    escaped_.clear();
    pending_ = 0;
    for (const char c : fl::i18n::to_string(text_.substr(at_, length))) {
      const auto byte = static_cast<unsigned char>(c);
      escaped_.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
    at_ += length;
  }

  std::u16string_view text_;
  std::size_t at_ = 0;
  std::string escaped_;  ///< of the character that was reached last
  std::size_t pending_ = 0;
};

char32_t characterAt(std::u16string_view text, std::size_t at) {
  return fl::i18n::isPairAt(text, at) ? fl::i18n::pairAt(text, at) : char32_t{text[at]};
}

/// As the ASCII forms of two rests compare: less than, equal to or greater than 0.
int compareForms(std::u16string_view a, std::u16string_view b) {
  AsciiUnits left(a);
  AsciiUnits right(b);
  while (left.hasNext() && right.hasNext()) {
    const auto x = left.next();
    const auto y = right.next();
    if (x != y)
      return x < y ? -1 : 1;
  }
  return left.hasNext() ? 1 : right.hasNext() ? -1 : 0;
}

}  // namespace

// The first difference nearly always decides without any form being made: the escapes of two characters
// compare as the characters do, and any other character compares with '%'.
int compareAsciiForms(std::u16string_view a, std::u16string_view b, std::size_t at) {
  if (at == a.size() || at == b.size())
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
  if (at > 0 && fl::i18n::isHighSurrogate(a[at - 1]))
    --at;  // the characters differ in their second halves
  const char32_t x = characterAt(a, at);
  const char32_t y = characterAt(b, at);
  if ((x < 0x80) == (y < 0x80))
    return x < y ? -1 : 1;
  const char32_t left = x < 0x80 ? x : U'%';
  const char32_t right = y < 0x80 ? y : U'%';
  if (left != right)
    return left < right ? -1 : 1;
  return compareForms(a.substr(at), b.substr(at));  // an escape in one text is a character in the other
}

std::uint64_t hashAsciiForm(std::u16string_view text) {
  constexpr std::uint64_t multiplier = 0xe9846af9b1a615d;
  std::uint64_t seed = 0;
  for (AsciiUnits units(text); units.hasNext();) {
    std::uint64_t x = seed + 0x9e3779b9 + units.next();
    x ^= x >> 32;
    x *= multiplier;
    x ^= x >> 32;
    x *= multiplier;
    x ^= x >> 28;
    seed = x;
  }
  return seed;
}

}  // namespace foundation::storage::provider::detail
