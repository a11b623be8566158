#include "support/http/Codec.h"

#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <curl/curl.h>
#include <openssl/evp.h>

#include <iomanip>
#include <iterator>
#include <locale>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace foundation::storage::testing::http::detail {

std::string digest(const char* name, std::string_view bytes) {
  unsigned char result[EVP_MAX_MD_SIZE];
  std::size_t size = 0;
  if (EVP_Q_digest(nullptr, name, nullptr, bytes.data(), bytes.size(), result, &size) != 1)
    throw std::runtime_error(std::string("OpenSSL has no ") + name);
  return {reinterpret_cast<const char*>(result), size};
}

std::string hex(std::string_view bytes) {
  std::string text;
  boost::algorithm::hex_lower(bytes, std::back_inserter(text));
  return text;
}

std::string base64(std::string_view bytes) {
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
  const auto size =
      EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                      reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(size));
  return text;
}

std::string unescaped(const std::string& text) {
  int size = 0;
  const std::unique_ptr<char, void (*)(void*)> bytes(
      curl_easy_unescape(nullptr, text.c_str(), static_cast<int>(text.size()), &size), curl_free);
  return {bytes.get(), static_cast<std::size_t>(size)};
}

std::string escaped(const std::string& bytes) {
  const std::unique_ptr<char, void (*)(void*)> text(
      curl_easy_escape(nullptr, bytes.c_str(), static_cast<int>(bytes.size())), curl_free);
  return text.get();
}

std::string escapedPath(const std::string& key) { return boost::replace_all_copy(escaped(key), "%2F", "/"); }

std::string formatted(std::time_t time, const char* format) {
  std::tm parts{};
  ::gmtime_r(&time, &parts);
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::put_time(&parts, format);
  return text.str();
}

}  // namespace foundation::storage::testing::http::detail
