#pragma once

#include <foundation/core/Export.h>

#include <string>
#include <string_view>

namespace fl::i18n {

/// `text` in UTF-8 (see `to_string`) for a message on one line: the control characters of ASCII are spelt out,
/// U+0000 as `\x00`, so that they neither end the message nor steer a terminal. Any number of threads may call it.
FOUNDATION_EXPORT std::string to_printable(std::u16string_view text);

}  // namespace fl::i18n
