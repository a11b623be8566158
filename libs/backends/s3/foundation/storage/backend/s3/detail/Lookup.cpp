#include <foundation/storage/backend/s3/detail/Lookup.h>

#include <foundation/storage/backend/s3/detail/Failure.h>
#include <foundation/storage/backend/s3/detail/Pages.h>

#include <string>
#include <utility>

namespace foundation::storage::backend::s3::detail {

using client::ObjectInfo;
using client::StoreFailure;
using provider::ErrorCode;
using provider::Exception;

namespace {

bool isFolder(const client::Client& client, const Place& place) {
  return anyBeginsWith(client, place.prefix()) || place.isRoot();
}

/// What `question` answers, or a missing bucket does.
template <class Answer, class Question>
Answer answerOf(const Place& place, const Question& question) {
  return at(place.location, [&]() -> Answer {
    try {
      return question();
    } catch (const StoreFailure& failure) {
      if (failure.errorCode() != ErrorCode::ResourceNotFound)
        throw;
      return Answer();
    }
  });
}

/// Whether the way to an entry leads through a file.
/// @param prefix  of the folder that should hold it
bool leadsThroughFile(const Session& session, std::string prefix) {
  for (; !prefix.empty() && !session.folders.knows(prefix); prefix = parentPrefixOf(prefix)) {
    if (anyBeginsWith(session.client, prefix))
      return false;
    if (session.client.head(prefix.substr(0, prefix.size() - 1)))
      return true;
  }
  return false;
}

Exception missing(const Session& session, const Place& place, std::u16string reason) {
  return leadsThroughFile(session, place.parentPrefix())
             ? refusal(ErrorCode::InvalidLocation, place.location, u"The path leads through a file")
             : refusal(ErrorCode::ResourceNotFound, place.location, std::move(reason));
}

/// Looks at a folder by a page of its entries, and keeps in mind what was seen.
/// @return whether it is there
bool look(Session& session, const std::string& prefix) {
  const auto changes = session.folders.changes();
  const auto page = firstPage(session.client, {.prefix = prefix, .delimiter = "/"});
  if (!prefix.empty() && page.objects.empty() && page.prefixes.empty())
    return false;
  KnownFolders::Sight sight;
  sight.isMarked = !page.objects.empty() && page.objects.front().key == prefix;
  sight.isWhole = page.nextToken.empty();
  for (const auto& folder : page.prefixes)
    sight.names.insert(folder.substr(prefix.size(), folder.size() - prefix.size() - 1));
  session.folders.see(prefix, std::move(sight), changes);
  return true;
}

}  // namespace

std::optional<ObjectInfo> findFile(const Session& session, const Place& place) {
  if (place.isRoot())
    return std::nullopt;
  return answerOf<std::optional<ObjectInfo>>(place, [&] { return session.client.head(place.key); });
}

bool folderExists(const Session& session, const Place& place) {
  return answerOf<bool>(place, [&] { return isFolder(session.client, place); });
}

ObjectInfo requireFile(const Session& session, const Place& place) {
  if (auto file = findFile(session, place))
    return *std::move(file);
  throw noFile(session, place);
}

void requireFolder(const Session& session, const Place& place) {
  if (!at(place.location, [&] { return isFolder(session.client, place); }))
    throw noFolder(session, place);
}

Exception noFile(const Session& session, const Place& place) {
  return at(place.location, [&] {
    return isFolder(session.client, place) ? refusal(ErrorCode::InvalidLocation, place.location, u"This is a folder")
                                           : missing(session, place, u"Nothing is there");
  });
}

Exception noFolder(const Session& session, const Place& place) {
  return at(place.location, [&] {
    return session.client.head(place.key) ? refusal(ErrorCode::InvalidLocation, place.location, u"This is a file")
                                          : missing(session, place, u"Nothing is there");
  });
}

void requireNoRoot(const Place& place) {
  if (place.isRoot())
    throw refusal(ErrorCode::InvalidLocation, place.location, u"The bucket itself stays what it is");
}

provider::Exception alreadyThere(const Place& place) {
  return refusal(ErrorCode::ResourceAlreadyExists, place.location, u"Something is there already");
}

void requireParent(Session& session, const Place& place) {
  requireNoRoot(place);
  at(place.location, [&] {
    const auto parent = place.parentPrefix();
    if (!session.folders.knows(parent) && !look(session, parent))
      throw missing(session, place, u"There is no folder that could hold it");
  });
}

bool hasFolder(const Session& session, const Place& place) {
  const auto prefix = place.prefix();
  return !session.folders.knowsMissing(prefix) &&
         at(place.location, [&] { return anyBeginsWith(session.client, prefix); });
}

void requireRoomForFile(Session& session, const Place& place) {
  requireParent(session, place);
  if (hasFolder(session, place))
    throw refusal(ErrorCode::InvalidLocation, place.location, u"This is a folder");
}

void requireDestination(Session& session, const Place& place, provider::ReplacementPolicy policy) {
  requireRoomForFile(session, place);
  if (preservesExisting(policy) && findFile(session, place))
    throw alreadyThere(place);
}

}  // namespace foundation::storage::backend::s3::detail
