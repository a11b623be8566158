#include <foundation/storage/backend/s3/detail/Creation.h>

#include <foundation/storage/backend/s3/detail/Failure.h>
#include <foundation/storage/backend/s3/detail/Lookup.h>

namespace foundation::storage::backend::s3::detail {

using client::Existing;
using provider::ErrorCode;

void createFile(Session& session, const Place& place) {
  requireParent(session, place);
  if (hasFolder(session, place))
    throw alreadyThere(place);
  at(place.location, [&] { return session.client.put(place.key, {}, Existing::Refuse); });
  session.folders.written(place.key);
}

void createFolder(Session& session, const Place& place) {
  if (place.isRoot()) {
    requireFolder(session, place);
    throw alreadyThere(place);
  }
  if (place.prefix().size() > longestKey)
    throw refusal(ErrorCode::InvalidLocation, place.location,
                  u"Keys of folders have no more than 1,023 bytes in UTF-8");
  requireParent(session, place);
  if (hasFolder(session, place) || findFile(session, place))
    throw alreadyThere(place);
  at(place.location, [&] { return session.client.put(place.prefix(), {}, Existing::Refuse); });
  session.folders.created(place.prefix());
}

}  // namespace foundation::storage::backend::s3::detail
