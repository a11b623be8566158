#include <foundation/storage/backend/local/LocalProviderFactory.h>

#include <foundation/storage/backend/local/detail/LocalProvider.h>
#include <foundation/storage/backend/local/detail/NativePath.h>

namespace foundation::storage::backend::local {

LocalProviderFactory::LocalProviderFactory() = default;
LocalProviderFactory::~LocalProviderFactory() = default;

provider::Capabilities LocalProviderFactory::capabilities() {
  using enum provider::Capability;
  return {Write,
          Append,
          RandomAccess,
          Wildcards,
          RecursiveListing,
          RecursiveRemoval,
          AtomicCopy,
          AtomicReplacement,
          ExclusiveCreation,
          SetLastModified,
          SetWritable,
          StorageInfo,
          AnyName,
          HugeFiles,
          ChangeEvents};
}

std::shared_ptr<provider::IProvider> LocalProviderFactory::doBuildProvider(const provider::StorageIRI&) const {
  return std::make_shared<detail::LocalProvider>();
}

provider::StorageIRI LocalProviderFactory::doGetKey(const provider::StorageIRI& location) const {
  detail::requireLocal(location);
  return provider::StorageIRI(u"file:///");
}

}  // namespace foundation::storage::backend::local
