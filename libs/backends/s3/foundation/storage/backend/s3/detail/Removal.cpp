#include <foundation/storage/backend/s3/detail/Removal.h>

#include <foundation/storage/backend/s3/detail/Failure.h>
#include <foundation/storage/backend/s3/detail/Lookup.h>
#include <foundation/storage/backend/s3/detail/Pages.h>
#include <foundation/storage/backend/s3/detail/client/Errors.h>

#include <utility>

namespace foundation::storage::backend::s3::detail {

using provider::ErrorCode;

namespace {

constexpr std::size_t mostAtOnce = 1000;  // docs.aws.amazon.com, "DeleteObjects"

}  // namespace

void removeFile(Session& session, const Place& place) {
  requireFile(session, place);
  at(place.location, [&] { session.client.remove(place.key); });
  session.folders.fileRemoved(place.key);
}

void removeFolder(Session& session, const Place& place) {
  requireNoRoot(place);
  const auto prefix = place.prefix();
  const auto content = at(place.location, [&] { return contentOf(session.client, prefix); });
  if (content == FolderContent::Missing)
    throw noFolder(session, place);
  if (content == FolderContent::Entries)
    throw refusal(ErrorCode::FolderNotEmpty, place.location, u"The folder is not empty");
  at(place.location, [&] { session.client.remove(prefix); });
  session.folders.forget(prefix);
}

void removeTree(Session& session, const provider::StorageIRI& root, const Place& place) {
  requireNoRoot(place);
  const client::Client::Listing all{.prefix = place.prefix()};
  const auto list = [&](const std::string& token) {
    return at(place.location, [&] { return session.client.list(all, token); });
  };
  auto page = at(place.location, [&] { return firstPage(session.client, all); });
  if (page.objects.empty())
    throw noFolder(session, place);
  session.folders.forget(all.prefix);
  ObjectRemoval removal(session.client, root);
  for (;; page = list(page.nextToken)) {
    for (auto& object : page.objects)
      removal.remove(std::move(object.key));
    if (page.nextToken.empty())
      break;
  }
  removal.finish();
  session.folders.forget(all.prefix);
}

void ObjectRemoval::remove(std::string key) {
  keys_.push_back(std::move(key));
  if (keys_.size() == mostAtOnce)
    removeGathered();
}

void ObjectRemoval::finish() {
  if (!keys_.empty())
    removeGathered();
  if (firstFailure_)
    std::rethrow_exception(firstFailure_);
}

void ObjectRemoval::removeGathered() {
  const auto keys = std::exchange(keys_, {});
  const auto failures = at(locationOf(root_, keys.front()), [&] { return client_.remove(keys); });
  if (failures.empty() || firstFailure_)
    return;
  try {
    const auto& first = failures.front();
    at(locationOf(root_, first.key), [&] {
      throw client::failureOf({.status = 200, .code = first.code, .message = first.message}, "DeleteObjects", 1);
    });
  } catch (const provider::Exception&) {
    firstFailure_ = std::current_exception();
  }
}

}  // namespace foundation::storage::backend::s3::detail
