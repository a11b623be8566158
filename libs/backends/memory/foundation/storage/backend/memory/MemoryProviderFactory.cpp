#include <foundation/storage/backend/memory/MemoryProviderFactory.h>

#include <foundation/storage/backend/memory/detail/MemoryProvider.h>
#include <foundation/storage/backend/memory/detail/Place.h>

namespace foundation::storage::backend::memory {

MemoryProviderFactory::MemoryProviderFactory() = default;
MemoryProviderFactory::~MemoryProviderFactory() = default;

provider::Capabilities MemoryProviderFactory::capabilities() {
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
          LimitedSpace,
          AnyName,
          HugeFiles};
}

std::shared_ptr<provider::IProvider> MemoryProviderFactory::doBuildProvider(
    const provider::StorageIRI& location) const {
  return std::make_shared<detail::MemoryProvider>(detail::rootOf(location));
}

provider::StorageIRI MemoryProviderFactory::doGetKey(const provider::StorageIRI& location) const {
  return detail::rootOf(location);
}

}  // namespace foundation::storage::backend::memory
