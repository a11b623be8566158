#pragma once

#include <ctime>
#include <string>
#include <string_view>

/// What S3 requests and answers are written in, apart from the code under test, so that a mistake there shows.
namespace foundation::storage::testing::http::detail {

/// @param name  as OpenSSL calls it
std::string digest(const char* name, std::string_view bytes);
std::string hex(std::string_view bytes);
std::string base64(std::string_view bytes);

std::string unescaped(const std::string& text);
/// All but letters, digits and "-._~"; of a path, '/' stays, too.
/// @{
std::string escaped(const std::string& bytes);
std::string escapedPath(const std::string& key);
/// @}

/// @param format  as of strftime(3)
std::string formatted(std::time_t time, const char* format);
inline constexpr auto httpTime = "%a, %d %b %Y %H:%M:%S GMT";
inline constexpr auto isoTime = "%Y-%m-%dT%H:%M:%S.000Z";

}  // namespace foundation::storage::testing::http::detail
