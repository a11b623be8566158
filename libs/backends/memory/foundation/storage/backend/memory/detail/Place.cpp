#include <foundation/storage/backend/memory/detail/Place.h>

#include <fl/i18n/Case.h>
#include <foundation/network/IRIArgs.h>
#include <foundation/storage/backend/memory/detail/Failure.h>
#include <foundation/storage/backend/support/PathNames.h>

namespace foundation::storage::backend::memory::detail {

using provider::ErrorCode;
using provider::StorageIRI;

namespace {

std::u16string lowered(std::u16string_view text) { return fl::i18n::detail::transform(text, fl::i18n::to_lower()); }

void requireNoMoreThanHostAndPath(const StorageIRI& location) {
  if (location.isOpaque())
    throw refusal(ErrorCode::InvalidLocation, location, u"This is a place inside a container");
  const auto iri = location.toIRI();
  if (iri.hasQuery() || iri.hasFragment())
    throw refusal(ErrorCode::InvalidLocation, location, u"In the name of a file '?' is written %3F, and '#' %23");
  if (iri.hasUserInfo() || iri.hasPort())
    throw refusal(ErrorCode::InvalidLocation, location, u"Memory knows no users and ports");
}

}  // namespace

StorageIRI rootOf(const StorageIRI& location) {
  // Schemes and hosts are the same in upper and lower case (RFC 3986, sections 3.1 and 3.2.2).
  if (lowered(location.getScheme()) != u"memory")
    throw refusal(ErrorCode::InvalidLocation, location, u"Only the scheme 'memory' is served here");
  requireNoMoreThanHostAndPath(location);
  if (!location.getPath().starts_with(u'/'))
    throw refusal(ErrorCode::InvalidLocation, location, u"A path in memory begins with '/'");
  network::IRIArgs root;
  root.setScheme(u"memory").setHost(lowered(location.getHost())).setPath(u"/");
  return StorageIRI(network::IRI(root));
}

Place placeIn(const StorageIRI& root, const StorageIRI& location) {
  if (rootOf(location) != root)
    throw refusal(ErrorCode::InvalidLocation, location, u"This is a place in another store");
  return {location, support::pathNames(location)};
}

}  // namespace foundation::storage::backend::memory::detail
