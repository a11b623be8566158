#include <foundation/storage/registry/DefaultRegistry.h>

#include <foundation/storage/backend/archive/ArchiveProviderFactory.h>
#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/backend/s3/S3ProviderFactory.h>
#include <foundation/storage/registry/ReadOnlyFilter.h>

namespace foundation::storage::registry {

namespace {

void addArchives(ProviderRegistry& registry, const std::u16string& scheme, backend::archive::ArchiveFormat format) {
  using backend::archive::ArchiveProviderFactory;
  registry.addContainer(scheme, std::make_shared<ArchiveProviderFactory>(format),
                        ArchiveProviderFactory::capabilities(format));
}

}  // namespace

ProviderRegistry makeDefaultRegistry() {
  ProviderRegistry registry;
  using backend::local::LocalProviderFactory;
  using backend::memory::MemoryProviderFactory;
  using backend::s3::S3ProviderFactory;
  registry.addPhysical(u"file", std::make_shared<LocalProviderFactory>(), LocalProviderFactory::capabilities());
  registry.addPhysical(u"memory", std::make_shared<MemoryProviderFactory>(), MemoryProviderFactory::capabilities());
  registry.addPhysical(u"s3", std::make_shared<S3ProviderFactory>(), S3ProviderFactory::capabilities());
  using backend::archive::ArchiveFormat;
  addArchives(registry, u"zip", ArchiveFormat::Zip);
  addArchives(registry, u"tar", ArchiveFormat::Tar);
  addArchives(registry, u"sevenzip", ArchiveFormat::SevenZip);
  addArchives(registry, u"archive", ArchiveFormat::Any);
  registry.addFilter(u"readonly", std::make_shared<ReadOnlyFilter>());
  return registry;
}

}  // namespace foundation::storage::registry
