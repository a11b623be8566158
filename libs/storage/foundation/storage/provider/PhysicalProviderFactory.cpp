#include <foundation/storage/provider/PhysicalProviderFactory.h>

#include <foundation/storage/provider/detail/ProviderFactoryImpl.h>

#include <utility>

namespace foundation::storage::provider {

PhysicalProviderFactory::PhysicalProviderFactory() : impl_(std::make_shared<detail::ProviderFactoryImpl>()) {}

PhysicalProviderFactory::~PhysicalProviderFactory() = default;

std::shared_ptr<IProvider> PhysicalProviderFactory::buildProvider(const StorageIRI& location) const {
  return impl_->getOrBuild(doGetKey(location), [this, &location] { return doBuildProvider(location); });
}

void PhysicalProviderFactory::configure(boost::property_tree::ptree configuration) {
  impl_->configure(std::move(configuration));
}

void PhysicalProviderFactory::shutdownProvider() const { impl_->shutdownAll(); }

}  // namespace foundation::storage::provider
