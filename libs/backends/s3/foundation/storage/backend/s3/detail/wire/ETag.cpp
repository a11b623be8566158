#include <foundation/storage/backend/s3/detail/wire/Documents.h>
#include <foundation/storage/backend/s3/detail/wire/XmlReader.h>

#include <charconv>

namespace foundation::storage::backend::s3::detail::wire {

std::string parseETag(std::string_view body) {
  const XmlReader document(body, {"CopyObjectResult", "CopyPartResult", "CompleteMultipartUploadResult"});
  return std::string(unquoted(textOf(document.root(), "ETag")));
}

std::string_view unquoted(std::string_view eTag) {
  if (eTag.starts_with("W/"))
    eTag.remove_prefix(2);
  if (eTag.size() >= 2 && eTag.front() == '"' && eTag.back() == '"')
    eTag = eTag.substr(1, eTag.size() - 2);
  return eTag;
}

std::optional<Md5> md5OfETag(std::string_view eTag) {
  const auto digits = unquoted(eTag);
  Md5 digest;
  if (digits.size() != 2 * digest.size())
    return std::nullopt;
  for (std::size_t i = 0; i < digest.size(); ++i) {
    const auto* const begin = digits.data() + 2 * i;
    if (const auto [stop, error] = std::from_chars(begin, begin + 2, digest[i], 16);
        error != std::errc() || stop != begin + 2)
      return std::nullopt;
  }
  return digest;
}

}  // namespace foundation::storage::backend::s3::detail::wire
