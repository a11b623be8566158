#pragma once

#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <curl/curl.h>
#include <openssl/evp.h>

#include <ctime>
#include <iomanip>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

/// What S3 requests and answers are written in, apart from the code under test, so that a mistake there shows.
namespace foundation::storage::testing::http::detail {

/// @param name  as OpenSSL calls it
inline std::string digest(const char* name, const std::string& bytes) {
  unsigned char result[EVP_MAX_MD_SIZE];
  std::size_t size = 0;
  if (EVP_Q_digest(nullptr, name, nullptr, bytes.data(), bytes.size(), result, &size) != 1)
    throw std::runtime_error(std::string("OpenSSL has no ") + name);
  return {reinterpret_cast<const char*>(result), size};
}

inline std::string hex(const std::string& bytes) {
  std::string text;
  boost::algorithm::hex_lower(bytes, std::back_inserter(text));
  return text;
}

inline std::string base64(const std::string& bytes) {
  unsigned char text[2 * EVP_MAX_MD_SIZE];
  const auto size =
      EVP_EncodeBlock(text, reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)};
}

using CurlText = std::unique_ptr<char, void (*)(void*)>;

inline std::string unescaped(const std::string& text) {
  int size = 0;
  const CurlText bytes(curl_easy_unescape(nullptr, text.c_str(), static_cast<int>(text.size()), &size), curl_free);
  return {bytes.get(), static_cast<std::size_t>(size)};
}

/// All but letters, digits and "-._~"; of a path, '/' stays, too.
/// @{
inline std::string escaped(const std::string& bytes) {
  return CurlText(curl_easy_escape(nullptr, bytes.c_str(), static_cast<int>(bytes.size())), curl_free).get();
}
inline std::string escapedPath(const std::string& key) { return boost::replace_all_copy(escaped(key), "%2F", "/"); }
/// @}

/// <name>text</name>
inline std::string element(const std::string& name, std::string text) {
  boost::replace_all(text, "&", "&amp;");
  boost::replace_all(text, "<", "&lt;");
  return "<" + name + ">" + text + "</" + name + ">";
}

/// @param format  as of strftime(3)
inline std::string formatted(std::time_t time, const char* format) {
  std::tm parts{};
  ::gmtime_r(&time, &parts);
  std::ostringstream text;
  text << std::put_time(&parts, format);
  return text.str();
}
inline constexpr auto httpTime = "%a, %d %b %Y %H:%M:%S GMT";
inline constexpr auto isoTime = "%Y-%m-%dT%H:%M:%S.000Z";

}  // namespace foundation::storage::testing::http::detail
