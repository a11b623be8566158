#include <foundation/storage/registry/DefaultRegistry.h>

#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/registry/ReadOnlyFilter.h>

namespace foundation::storage::registry {

ProviderRegistry makeDefaultRegistry() {
  ProviderRegistry registry;
  using backend::local::LocalProviderFactory;
  using backend::memory::MemoryProviderFactory;
  registry.addPhysical(u"file", std::make_shared<LocalProviderFactory>(), LocalProviderFactory::capabilities());
  registry.addPhysical(u"memory", std::make_shared<MemoryProviderFactory>(), MemoryProviderFactory::capabilities());
  registry.addFilter(u"readonly", std::make_shared<ReadOnlyFilter>());
  return registry;
}

}  // namespace foundation::storage::registry
