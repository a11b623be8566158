#pragma once

#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/wire/Request.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::client {

/// Reads digits; nothing where there is anything else, or too many.
std::optional<std::uint64_t> parseNumber(std::string_view digits);

/// What headers say of an object, but for its size.
ObjectInfo objectInfoOf(const wire::Headers& headers);

/// The size that "content-length" gives; throws `BadAnswer` where it gives none.
std::uint64_t lengthOf(const wire::Headers& headers);

/// The ETag without quotes; empty where there is none.
std::string eTagOf(const wire::Headers& headers);

/// Whether the object is encrypted so that its ETag says nothing of its content.
bool isETagOpaque(const wire::Headers& headers);

/// The MD5 of the content, if the ETag is that.
std::optional<wire::Md5> md5Of(const wire::Headers& headers);

/// "bytes=0-9", as requests have it.
std::string formatRange(const Range& range);

/// What "content-range" says.
struct ContentRange {
  std::uint64_t first;
  std::uint64_t last;
  std::uint64_t total;  ///< of the whole object
};
/// Reads "bytes 0-9/100"; nothing for what makes no sense, or does not tell the total.
std::optional<ContentRange> parseContentRange(std::string_view text);

}  // namespace foundation::storage::backend::s3::detail::client
