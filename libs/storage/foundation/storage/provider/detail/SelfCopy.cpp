#include <foundation/storage/provider/detail/SelfCopy.h>

#include <foundation/storage/provider/FilteringURL.h>
#include <foundation/storage/provider/extensions/IFileIdentity.h>

#include <utility>

namespace foundation::storage::provider::detail {

namespace {

/// The same file may be seen through filters, which stand before the scheme.
StorageIRI unfiltered(const StorageIRI& location) {
  const auto text = location.toString();
  auto physical = getPhysicalURLFromFilteringURL(text);
  return physical == text ? location : StorageIRI(std::move(physical));
}

}  // namespace

bool areOneFile(const IProvider& store, const StorageIRI& file, const IProvider& otherStore, const StorageIRI& other) {
  const auto* identities = dynamic_cast<const extensions::IFileIdentity*>(&store);
  const auto* otherIdentities = dynamic_cast<const extensions::IFileIdentity*>(&otherStore);
  if (identities != nullptr && otherIdentities != nullptr)
    return identities->getFileIdentity(file) == otherIdentities->getFileIdentity(other);
  return getPhysicalPartFromFilteringScheme(file.getScheme()) ==
             getPhysicalPartFromFilteringScheme(other.getScheme()) &&
         unfiltered(store.getCanonicalLocation(file)) == unfiltered(otherStore.getCanonicalLocation(other));
}

Exception selfCopyRefusal(const StorageIRI& destination) {
  Exception refusal(ErrorCode::InvalidLocation, destination);
  ExceptionContextInfo info(u"A file cannot be copied onto itself", {}, {{u"location", destination.toString()}});
  refusal.setExceptionContexts({ExceptionContext(u"copyFile", std::move(info))});
  return refusal;
}

}  // namespace foundation::storage::provider::detail
