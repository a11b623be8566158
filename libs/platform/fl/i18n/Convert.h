#pragma once

#include <foundation/core/Export.h>

#include <string>
#include <string_view>

/// Text in UTF-16, as this project holds all names, paths and messages, and its narrow forms.
///
/// Narrow text is UTF-8. A file name need not be: each byte 0x80-0xFF that is no part of a valid UTF-8
/// sequence becomes the lone surrogate U+DC80-U+DCFF, and back, so every sequence of bytes survives
/// the way into UTF-16 and out again. (The other way round a lone surrogate outside that range becomes
/// the three bytes that UTF-8's scheme gives it, which reads back as three bad bytes.)
///
/// All functions may be called by any number of threads.
namespace fl::i18n {

/// The UTF-16 form of `bytes`. Throws nothing but `std::bad_alloc`.
FOUNDATION_EXPORT std::u16string to_ustring(std::string_view bytes);

/// The bytes of `text`: its UTF-8 form, where lone surrogates U+DC80-U+DCFF stand for one byte each.
FOUNDATION_EXPORT std::string to_string(std::u16string_view text);

/// Appends `to_string(text)` to `out`; for callers that reuse a buffer.
FOUNDATION_EXPORT void append_string(std::string& out, std::u16string_view text);

/// Appends `to_ustring(bytes)` to `out`.
FOUNDATION_EXPORT void append_ustring(std::u16string& out, std::string_view bytes);

}  // namespace fl::i18n
