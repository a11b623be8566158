#include <foundation/storage/provider/ContainerProviderFactory.h>

#include <foundation/storage/provider/detail/ProviderFactoryImpl.h>

#include <utility>

namespace foundation::storage::provider {

ContainerProviderFactory::ContainerProviderFactory() : impl_(std::make_shared<detail::ProviderFactoryImpl>()) {}

ContainerProviderFactory::~ContainerProviderFactory() = default;

std::shared_ptr<IProvider> ContainerProviderFactory::buildProvider(const StorageItem& item) const {
  return impl_->getOrBuild(doGetKey(item), [this, &item] { return doBuildProvider(item); });
}

void ContainerProviderFactory::configure(boost::property_tree::ptree configuration) {
  impl_->configure(std::move(configuration));
}

void ContainerProviderFactory::shutdownProvider() const { impl_->shutdownAll(); }

}  // namespace foundation::storage::provider
