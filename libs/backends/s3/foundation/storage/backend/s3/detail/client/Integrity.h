#pragma once

#include <foundation/storage/backend/s3/detail/http/HttpClient.h>
#include <foundation/storage/backend/s3/detail/wire/Digest.h>
#include <foundation/storage/backend/s3/detail/wire/Documents.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::s3::detail::client {

/// The header that has the store check a body.
wire::Header md5Header(const wire::Md5& md5);

/// Throws `BadAnswer` where the store says that it holds something else than was sent.
void requireStored(const http::HttpAnswer& answer, const wire::Md5& sent);

/// Throws `BadAnswer` where the body is a whole object, and not what its ETag says.
void requireIntact(const http::HttpAnswer& answer);

/// Throws `BadAnswer` unless the answer tells an ETag.
void requireETag(const http::HttpAnswer& answer);

/// The ETag that an object has which is put together of these parts, where the store makes it the usual way: the MD5 of
/// the parts' MD5s, and their number. Empty where an ETag of a part is no MD5.
std::string eTagOfParts(const std::vector<wire::Part>& parts);

}  // namespace foundation::storage::backend::s3::detail::client
