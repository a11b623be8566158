#pragma once

#include <fl/i18n/Convert.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace foundation::laws {

/// A law that does not hold for some input. Thrown, so that a fuzzer stops at it and a test reports it.
class Violation : public std::logic_error {
 public:
  Violation(const std::string& law, std::u16string_view input)
      : std::logic_error(law + ", for '" + fl::i18n::to_string(input) + "'") {}
};

inline void require(bool holds, const char* law, std::u16string_view input) {
  if (!holds)
    throw Violation(law, input);
}

}  // namespace foundation::laws
