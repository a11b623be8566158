#pragma once

#include <fl/i18n/Convert.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace foundation::fuzz {

/// A fuzzer's bytes as lines of text. Every sequence of bytes is some text, and most texts with lone
/// surrogates can be had this way.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size)
      : rest_(static_cast<const char*>(static_cast<const void*>(data)), size) {}

  /// The next line; empty where there is none.
  std::u16string line() {
    const auto end = rest_.find('\n');
    const auto bytes = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    return fl::i18n::to_ustring(bytes);
  }

 private:
  std::string_view rest_;
};

}  // namespace foundation::fuzz
