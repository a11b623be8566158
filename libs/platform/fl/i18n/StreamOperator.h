#pragma once

#include <foundation/core/Export.h>

#include <iosfwd>
#include <string_view>

namespace fl::i18n {

/// Writes `text` in UTF-8 to a narrow stream, as a string would be: width, fill and adjustment count
/// bytes. Argument-dependent look-up does not find it for `std::u16string`; say
/// `using fl::i18n::operator<<;` where it is wanted.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, std::u16string_view text);

}  // namespace fl::i18n
