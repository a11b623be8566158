#include <foundation/storage/backend/s3/detail/client/Integrity.h>

#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/client/ObjectHeaders.h>

namespace foundation::storage::backend::s3::detail::client {

wire::Header md5Header(const wire::Md5& md5) { return {"content-md5", wire::base64(wire::bytesOf(md5))}; }

void requireStored(const http::HttpAnswer& answer, const wire::Md5& sent) {
  const auto stored = md5Of(answer.headers);
  if (stored && *stored != sent)
    throw BadAnswer("The store holds something else than was sent");
}

void requireIntact(const http::HttpAnswer& answer) {
  const auto stored = md5Of(answer.headers);
  if (stored && *stored != wire::md5(answer.body))
    throw BadAnswer("The content does not match its checksum");
}

void requireETag(const http::HttpAnswer& answer) {
  if (eTagOf(answer.headers).empty())
    throw BadAnswer("The answer has no ETag");
}

std::string eTagOfParts(const std::vector<wire::Part>& parts) {
  std::string digests;
  for (const auto& part : parts) {
    const auto md5 = wire::md5OfETag(part.eTag);
    if (!md5)
      return {};
    digests += wire::bytesOf(*md5);
  }
  return wire::hex(wire::bytesOf(wire::md5(digests))) + "-" + std::to_string(parts.size());
}

}  // namespace foundation::storage::backend::s3::detail::client
