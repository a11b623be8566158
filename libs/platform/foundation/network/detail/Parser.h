#pragma once

#include <foundation/network/detail/Parts.h>

#include <string>

namespace foundation::network::detail {

/// Finds the components of `text`, an IRI or a relative reference (RFC 3987 section 2.2), in one pass.
/// Throws `IRISyntaxException` at the first character that does not fit.
Parts parse(const std::u16string& text);

}  // namespace foundation::network::detail
