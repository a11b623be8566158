#pragma once

#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::wire {

/// Escapes every byte but the unreserved ones (RFC 3986, 2.3: letters, digits, "-._~"), with upper-case hex digits.
std::string encode(std::string_view bytes);

/// The same, with '/' kept: a key as the path of a URL.
std::string encodePath(std::string_view key);

/// Undoes escapes, each once; what is no escape stays. '+' stays '+'.
std::string decode(std::string_view text);

}  // namespace foundation::storage::backend::s3::detail::wire
