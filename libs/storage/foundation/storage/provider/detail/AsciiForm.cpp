#include <foundation/storage/provider/detail/AsciiForm.h>

#include <fl/i18n/Convert.h>
#include <fl/i18n/Surrogates.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string>

namespace foundation::storage::provider::detail {
namespace {

constexpr std::size_t unitsPerWord = sizeof(std::uint64_t) / sizeof(char16_t);

std::uint64_t wordAt(const char16_t* text) {
  std::uint64_t word;
  std::memcpy(&word, text, sizeof word);
  return word;
}

/// The offset of the first code unit in which the texts differ, or the length of the shorter one.
std::size_t findDifference(std::u16string_view a, std::u16string_view b) {
  const auto size = std::min(a.size(), b.size());
  std::size_t at = 0;
  if constexpr (std::endian::native == std::endian::little)
    for (; at + unitsPerWord <= size; at += unitsPerWord)
      if (const auto difference = wordAt(a.data() + at) ^ wordAt(b.data() + at); difference != 0)
        return at + static_cast<std::size_t>(std::countr_zero(difference)) / (8 * sizeof(char16_t));
  while (at < size && a[at] == b[at])
    ++at;
  return at;
}

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

/// Less than, equal to or greater than 0, as the ASCII forms compare from `at` on, before which the
/// texts are the same.
int compareFrom(std::size_t at, std::u16string_view a, std::u16string_view b) {
  if (at == a.size() || at == b.size())
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
  if (a[at] < 0x80 && b[at] < 0x80)
    return a[at] < b[at] ? -1 : 1;
  if (at > 0 && fl::i18n::isHighSurrogate(a[at - 1]))
    --at;  // the characters differ in their second halves
  AsciiUnits left(a.substr(at));
  AsciiUnits right(b.substr(at));
  while (left.hasNext() && right.hasNext()) {
    const auto x = left.next();
    const auto y = right.next();
    if (x != y)
      return x < y ? -1 : 1;
  }
  return left.hasNext() ? 1 : right.hasNext() ? -1 : 0;
}

}  // namespace

bool sameAsciiForm(std::u16string_view a, std::u16string_view b) {
  if (a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0)
    return true;
  return compareFrom(findDifference(a, b), a, b) == 0;
}

bool lessAsciiForm(std::u16string_view a, std::u16string_view b) { return compareFrom(findDifference(a, b), a, b) < 0; }

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
