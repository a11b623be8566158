#include <foundation/storage/provider/detail/ProviderFactoryImpl.h>

#include <foundation/storage/provider/IConfigurableProvider.h>

#include <utility>

namespace foundation::storage::provider::detail {
namespace {

void configureIfPossible(IProvider* provider, const boost::property_tree::ptree& configuration) {
  if (configuration.empty())
    return;
  if (auto* configurable = dynamic_cast<IConfigurableProvider*>(provider))
    configurable->configure(configuration);
}

}  // namespace

std::shared_ptr<IProvider> ProviderFactoryImpl::getOrBuild(const StorageIRI& key, const Builder& builder) {
  const std::scoped_lock lock(mutex_);
  if (const auto found = cache_.find(key); found != cache_.end())
    if (auto live = found->second.lock())
      return live;
  auto provider = builder();
  configureIfPossible(provider.get(), configuration_);
  cache_.insert_or_assign(key, provider);
  return provider;
}

void ProviderFactoryImpl::configure(boost::property_tree::ptree configuration) {
  Cache known;
  {
    // Both at once: a provider that is built meanwhile is either known here or gets the new configuration.
    const std::scoped_lock lock(mutex_);
    known = cache_;
    configuration_ = std::move(configuration);
  }
  for (const auto& [key, provider] : known)
    configureIfPossible(provider.lock().get(), storedConfiguration());
}

/// A provider may configure its factory while it is being configured: the others get what is newest then.
boost::property_tree::ptree ProviderFactoryImpl::storedConfiguration() const {
  const std::scoped_lock lock(mutex_);
  return configuration_;
}

void ProviderFactoryImpl::shutdownAll() {
  for (const auto& [key, provider] : snapshot())
    if (const auto live = provider.lock())
      live->shutdown();
  const std::scoped_lock lock(mutex_);
  cache_.clear();
}

ProviderFactoryImpl::Cache ProviderFactoryImpl::snapshot() const {
  const std::scoped_lock lock(mutex_);
  return cache_;
}

}  // namespace foundation::storage::provider::detail
