#include <foundation/storage/backend/s3/detail/Place.h>

#include <fl/i18n/Case.h>
#include <fl/i18n/Convert.h>
#include <fl/i18n/Surrogates.h>
#include <foundation/network/IRIArgs.h>
#include <foundation/storage/backend/s3/detail/Failure.h>

namespace foundation::storage::backend::s3::detail {

using provider::ErrorCode;
using provider::StorageIRI;

namespace {

std::u16string lowered(std::u16string_view text) { return fl::i18n::detail::transform(text, fl::i18n::to_lower()); }

void requireNoMoreThanHostAndPath(const StorageIRI& location) {
  if (location.isOpaque())
    throw refusal(ErrorCode::InvalidLocation, location, u"This is a place inside a container");
  const auto iri = location.toIRI();
  if (iri.hasQuery() || iri.hasFragment())
    throw refusal(ErrorCode::InvalidLocation, location, u"In a key '?' is written %3F, and '#' %23");
  if (iri.hasUserInfo() || iri.hasPort())
    throw refusal(ErrorCode::InvalidLocation, location, u"Users and ports are options of the store's");
  if (!location.hasHost())
    throw refusal(ErrorCode::InvalidLocation, location, u"It names no bucket, as s3://BUCKET/KEY does");
}

StorageIRI locationIn(const std::u16string& bucket, const std::u16string& path) {
  network::IRIArgs parts;
  parts.setScheme(u"s3").setHost(bucket).setPath(path);
  return StorageIRI(network::IRI(parts));
}

bool isUnicode(std::u16string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at)
    if (fl::i18n::isPairAt(text, at))
      ++at;
    else if (fl::i18n::isSurrogate(text[at]))
      return false;
  return true;
}

std::u16string_view keyIn(std::u16string_view path) {
  if (path.starts_with(u'/'))
    path.remove_prefix(1);
  if (path.ends_with(u'/'))
    path.remove_suffix(1);
  return path;
}

}  // namespace

StorageIRI rootOf(const StorageIRI& location) {
  // Schemes are the same in upper and lower case (RFC 3986, 3.1); stores of one's own have buckets that are not.
  if (lowered(location.getScheme()) != u"s3")
    throw refusal(ErrorCode::InvalidLocation, location, u"Only the scheme 's3' is served here");
  requireNoMoreThanHostAndPath(location);
  return locationIn(location.getHost(), u"/");
}

std::string bucketOf(const StorageIRI& root) { return fl::i18n::to_string(root.getHost()); }

Place placeIn(const StorageIRI& root, const StorageIRI& location) {
  if (rootOf(location) != root)
    throw refusal(ErrorCode::InvalidLocation, location, u"This is a place in another bucket");
  const auto key = keyIn(location.getPath());
  if (!isUnicode(key))
    throw refusal(ErrorCode::InvalidLocation, location, u"Keys are Unicode, and this name is not");
  Place place{location, fl::i18n::to_string(key)};
  if (place.key.size() > longestKey)
    throw refusal(ErrorCode::InvalidLocation, location, u"Keys have no more than 1,024 bytes in UTF-8");
  return place;
}

StorageIRI locationOf(const StorageIRI& root, std::string_view key) {
  return locationIn(root.getHost(), u"/" + fl::i18n::to_ustring(key));
}

std::string parentPrefixOf(std::string_view key) {
  if (key.ends_with('/'))
    key.remove_suffix(1);
  const auto slash = key.rfind('/');
  if (slash == key.npos)
    return {};
  const auto end = key.substr(0, slash).find_last_not_of('/');
  return end == key.npos ? std::string() : std::string(key.substr(0, end + 1)) + '/';
}

std::string Place::parentPrefix() const { return parentPrefixOf(key); }

}  // namespace foundation::storage::backend::s3::detail
