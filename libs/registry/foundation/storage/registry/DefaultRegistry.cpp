#include <foundation/storage/registry/DefaultRegistry.h>

#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/registry/ReadOnlyFilter.h>

namespace foundation::storage::registry {

ProviderRegistry makeDefaultRegistry() {
  ProviderRegistry registry;
  registry.addPhysical(u"file", std::make_shared<backend::local::LocalProviderFactory>());
  registry.addPhysical(u"memory", std::make_shared<backend::memory::MemoryProviderFactory>());
  registry.addFilter(u"readonly", std::make_shared<ReadOnlyFilter>());
  return registry;
}

}  // namespace foundation::storage::registry
