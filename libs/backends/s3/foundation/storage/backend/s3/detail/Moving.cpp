#include <foundation/storage/backend/s3/detail/Moving.h>

#include <foundation/storage/backend/s3/detail/Copying.h>
#include <foundation/storage/backend/s3/detail/Failure.h>
#include <foundation/storage/backend/s3/detail/Lookup.h>
#include <foundation/storage/backend/s3/detail/Pages.h>
#include <foundation/storage/backend/s3/detail/Parallel.h>
#include <foundation/storage/backend/s3/detail/Removal.h>
#include <foundation/storage/backend/support/Log.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace foundation::storage::backend::s3::detail {

using provider::ErrorCode;
using provider::ReplacementPolicy;

namespace {

/// Beyond this, objects are copied by parts, which have to be told what else is stored with the object.
constexpr std::uint64_t mostCopiedAtOnce = std::uint64_t{5} << 30;  // docs.aws.amazon.com, "CopyObject"

/// What a move onto the source itself comes to.
void keepInPlace(const Place& destination, ReplacementPolicy policy) {
  if (preservesExisting(policy))
    throw alreadyThere(destination);
}

/// Throws unless a folder can be moved there.
/// @return whether an empty object stands for the folder that is replaced
bool requireFolderDestination(Session& session, const Place& place, ReplacementPolicy policy) {
  if (!place.isRoot())
    requireParent(session, place);
  const bool isFile = findFile(session, place).has_value();
  const auto content = at(place.location, [&] { return contentOf(session.client, place.prefix()); });
  if ((isFile || content != FolderContent::Missing) && preservesExisting(policy))
    throw alreadyThere(place);
  if (isFile)
    throw refusal(ErrorCode::InvalidLocation, place.location, u"This is a file");
  if (content == FolderContent::Entries)
    throw refusal(ErrorCode::FolderNotEmpty, place.location, u"The folder is not empty");
  return content == FolderContent::OnlyMarker;
}

class FolderMove {
 public:
  FolderMove(Session& session, const provider::StorageIRI& root, const Place& source, const Place& destination)
      : session_(session), root_(root), source_(source), from_(source.prefix()), to_(destination.prefix()) {}

  /// Copies everything, or nothing.
  /// @param keepsMarker  whether the destination was there before, and stays in any case
  void copyAll(bool keepsMarker) {
    try {
      const client::Client::Listing all{.prefix = from_};
      for (std::string token;;) {
        const auto page = at(source_.location, [&] { return session_.client.list(all, token); });
        inParallel(page.objects.size(), session_.client.settings().parallelParts,
                   [&](std::size_t number) { copy(page.objects[number]); });
        token = page.nextToken;
        if (token.empty())
          return;
      }
    } catch (...) {
      removeCopies(keepsMarker);
      throw;
    }
  }

  void removeSource() {
    ObjectRemoval removal(session_.client, root_);
    for (const auto& name : names_)
      removal.remove(from_ + name);
    removal.finish();
  }

 private:
  void copy(const wire::ListedObject& object) {
    const auto name = object.key.substr(from_.size());
    {
      // Before it is copied, as a copy whose answer is lost may have been made.
      const std::scoped_lock lock(mutex_);
      names_.push_back(name);
    }
    const auto source = placeOf(object.key);
    copyObject(session_.client, source, infoOf(source, object), placeOf(to_ + name));
  }

  Place placeOf(const std::string& key) const { return {locationOf(root_, key), key}; }

  client::ObjectInfo infoOf(const Place& place, const wire::ListedObject& object) const {
    if (object.size > mostCopiedAtOnce)
      return requireFile(session_, place);
    client::ObjectInfo info;
    info.size = object.size;
    info.eTag = object.eTag;
    return info;
  }

  void removeCopies(bool keepsMarker) noexcept {
    try {
      ObjectRemoval removal(session_.client, root_);
      for (const auto& name : names_)
        if (!name.empty() || !keepsMarker)
          removal.remove(to_ + name);
      removal.finish();
    } catch (...) {
      support::logCaughtFailure("A folder could not be moved, and what was copied of it could not be removed again.");
    }
  }

  Session& session_;
  const provider::StorageIRI& root_;
  const Place& source_;
  const std::string from_;
  const std::string to_;
  std::mutex mutex_;                ///< guards the names
  std::vector<std::string> names_;  ///< of what is, or may be, copied, within either folder
};

}  // namespace

void moveFile(Session& session, const Place& source, const Place& destination, ReplacementPolicy policy) {
  const auto object = requireFile(session, source);
  if (destination.key == source.key)
    return keepInPlace(destination, policy);
  requireDestination(session, destination, policy);
  copyObject(session.client, source, object, destination);
  session.folders.written(destination.key);
  at(source.location, [&] { session.client.remove(source.key); });
  session.folders.fileRemoved(source.key);
}

void moveFolder(Session& session, const provider::StorageIRI& root, const Place& source, const Place& destination,
                ReplacementPolicy policy) {
  requireNoRoot(source);
  requireFolder(session, source);
  if (destination.key == source.key)
    return keepInPlace(destination, policy);
  if (destination.key.starts_with(source.prefix()))
    throw refusal(ErrorCode::InvalidLocation, destination.location, u"A folder cannot be moved into itself");
  FolderMove move(session, root, source, destination);
  move.copyAll(requireFolderDestination(session, destination, policy));
  session.folders.appeared(destination.prefix());
  session.folders.forget(source.prefix());  // what a failure leaves of it is anybody's guess
  move.removeSource();
  session.folders.forget(source.prefix());
}

}  // namespace foundation::storage::backend::s3::detail
