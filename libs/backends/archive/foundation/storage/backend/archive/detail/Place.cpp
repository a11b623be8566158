#include <foundation/storage/backend/archive/detail/Place.h>

#include <foundation/storage/backend/archive/detail/Failure.h>
#include <foundation/storage/backend/support/PathNames.h>

namespace foundation::storage::backend::archive::detail {

using provider::ErrorCode;

Place placeOf(const provider::StorageIRI& location) {
  if (!location.hasInnerIRI())
    throw refusal(ErrorCode::InvalidLocation, location, u"This is no place inside an archive");
  const auto iri = location.toIRI();
  if (iri.hasQuery() || iri.hasFragment())
    throw refusal(ErrorCode::InvalidLocation, location, u"In the name of a file '?' is written %3F, and '#' %23");
  Place place{location, support::pathNames(location)};
  if (place.names.size() > deepest)
    throw refusal(ErrorCode::InvalidLocation, location, u"No entry lies that many names deep");
  for (const auto& name : place.names)
    if (!isStorable(name))
      throw refusal(ErrorCode::InvalidLocation, location, u"A name holds a lone surrogate that stands for no byte");
  return place;
}

}  // namespace foundation::storage::backend::archive::detail
