#include <fl/i18n/StreamOperator.h>

#include <fl/i18n/Convert.h>

#include <ostream>

namespace fl::i18n {

std::ostream& operator<<(std::ostream& out, std::u16string_view text) {
  const auto bytes = to_string(text);
  return out << bytes;
}

}  // namespace fl::i18n
