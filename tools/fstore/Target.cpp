#include <fstore/Refusal.h>
#include <fstore/Target.h>

#include <foundation/storage/provider/FilteringURL.h>

#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ErrorCode;
using provider::StorageIRI;
using provider::StorageItem;

namespace {

bool isNameless(const StorageItem& item) {
  const auto name = item.getName();
  return name == u"." || name == u".." || !item.hasParent();
}

}  // namespace

Target::Target(StorageItem item, const std::string& argument, std::size_t sourceCount)
    : item_(std::move(item)), isFolder_(item_.folderExists()), mustBeFolder_(argument.ends_with('/')) {
  if (sourceCount > 1 && !isFolder_)
    throw refusal(ErrorCode::InvalidLocation, item_.getLocation(), u"Several sources need an existing folder");
}

StorageItem Target::placeFor(const StorageItem& source) {
  if (!isFolder_ && mustBeFolder_ && !source.folderExists())
    throw refusal(ErrorCode::ResourceNotFound, item_.getLocation(), u"There is no such folder");
  if (!isFolder_)
    return item_;
  // "a/.." is no name to be given to anything: the folder's own name is.
  const auto named = isNameless(source) ? source.getCanonicalLocation() : source.getLocation();
  if (!named.hasParent())
    throw refusal(ErrorCode::InvalidLocation, named, u"The root has no name to go by in another folder");
  StorageItem place(item_, named.getName());
  if (!taken_.insert(place.getLocation()).second)
    throw refusal(ErrorCode::ResourceAlreadyExists, place.getLocation(), u"Another source was just put there");
  return place;
}

StorageIRI entryLocation(const StorageItem& item) {
  if (isNameless(item))
    return item.getCanonicalLocation();
  return {item.getParent().getCanonicalLocation(), item.getName()};
}

StorageIRI writtenLocation(const StorageItem& item) {
  const bool isThere = item.exists() != provider::ExistenceType::AsNeither;
  return isThere ? item.getCanonicalLocation() : entryLocation(item);
}

StorageIRI physicalLocation(const StorageIRI& location) {
  if (location.getScheme().find(u'+') == std::u16string::npos)
    return location;
  return StorageIRI(provider::getPhysicalURLFromFilteringURL(location.toString()));
}

bool contains(const StorageIRI& filteredFolder, const StorageIRI& filteredLocation) {
  const auto folder = physicalLocation(filteredFolder);
  const auto location = physicalLocation(filteredLocation);
  return folder == location || folder.isAncestorOf(location);
}

}  // namespace fstore
