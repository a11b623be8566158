#pragma once

#include <foundation/core/Export.h>

#include <string>
#include <string_view>

namespace fl::i18n {

/// Lower-cases one code point by Unicode's simple case mapping, which depends neither on the language
/// nor on the neighbours (so both forms of the Greek sigma stay apart, and U+0130 becomes "i").
struct FOUNDATION_EXPORT to_lower {
  /// The lower-case form; of all that has none, the code point itself. Any number of threads may ask.
  char32_t operator()(char32_t codePoint) const;
};

namespace detail {

/// A copy of `text` with `mapping` applied to every code point. Lone surrogates are passed over as they
/// are, since they are no characters.
FOUNDATION_EXPORT std::u16string transform(std::u16string_view text, const to_lower& mapping);

}  // namespace detail
}  // namespace fl::i18n
