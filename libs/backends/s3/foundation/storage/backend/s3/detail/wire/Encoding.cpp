#include <foundation/storage/backend/s3/detail/wire/Encoding.h>

namespace foundation::storage::backend::s3::detail::wire {

namespace {

constexpr std::string_view upperDigits = "0123456789ABCDEF";

// Not <cctype>, whose answers depend on the locale.
bool isUnreserved(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
         c == '_' || c == '~';
}

std::string escape(std::string_view bytes, std::string_view kept) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 4);
  for (const char c : bytes) {
    if (isUnreserved(c) || kept.find(c) != std::string_view::npos) {
      text += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    text += {'%', upperDigits[byte >> 4U], upperDigits[byte & 0xFU]};
  }
  return text;
}

/// What a hex digit stands for; -1 for what is none.
int digit(char c) {
  if (c >= '0' && c <= '9')
    return c - '0';
  if (c >= 'a' && c <= 'f')
    return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

}  // namespace

std::string encode(std::string_view bytes) { return escape(bytes, ""); }

std::string encodePath(std::string_view key) { return escape(key, "/"); }

std::string decode(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool hasDigits = text[i] == '%' && i + 2 < text.size();
    const int high = hasDigits ? digit(text[i + 1]) : -1;
    const int low = hasDigits ? digit(text[i + 2]) : -1;
    const bool isEscape = high >= 0 && low >= 0;
    bytes += isEscape ? static_cast<char>(high * 16 + low) : text[i];
    i += isEscape ? 2 : 0;
  }
  return bytes;
}

}  // namespace foundation::storage::backend::s3::detail::wire
