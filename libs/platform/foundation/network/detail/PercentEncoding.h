#pragma once

#include <foundation/network/detail/Characters.h>

#include <string>
#include <string_view>

namespace foundation::network::detail {

/// What was seen in a text while it was encoded.
struct EncodingNotes {
  bool isAscii = true;            ///< the encoded text has ASCII characters only
  bool hasEscapes = false;        ///< something had to be escaped
  bool hasLoneSurrogate = false;  ///< in the plain text: it may not come back from the encoded one
};

/// Appends `plain` with everything escaped that may not stand in a component, '%' always included.
/// Bytes of names that are no UTF-8 (see fl::i18n) become "%80" to "%FF".
EncodingNotes appendEncoded(std::u16string& out, std::u16string_view plain, Allowed where);

/// Every escape of `written` decoded once; bytes that are no UTF-8 come out as U+DC80-U+DCFF.
std::u16string decoded(std::u16string_view written);

/// `written` with every non-ASCII character escaped (RFC 3987, section 3.1, for all components).
std::u16string asciiForm(std::u16string_view written);

}  // namespace foundation::network::detail
