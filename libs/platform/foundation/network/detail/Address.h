#pragma once

#include <string_view>

namespace foundation::network::detail {

/// Whether `text` can stand between the brackets of a host (RFC 3986, section 3.2.2): an IPv6 address, or
/// "v", hexadecimal digits, "." and an address of a future form.
bool isBracketedAddress(std::u16string_view text);

}  // namespace foundation::network::detail
