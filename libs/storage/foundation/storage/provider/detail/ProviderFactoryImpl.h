#pragma once

#include <foundation/storage/provider/IProvider.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <boost/property_tree/ptree.hpp>

#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace foundation::storage::provider::detail {

/// The cache behind a provider factory and its copies.
///
/// The mutex guards the cache and the configuration. It is held while a provider is built and
/// configured, so that no key is built twice at once; it is not held while live providers are
/// configured or shut down, which may therefore use the factory.
///
/// The keys of one factory are of one kind of location, within which their order is a strict weak one.
class ProviderFactoryImpl {
 public:
  using Builder = std::function<std::shared_ptr<IProvider>()>;

  std::shared_ptr<IProvider> getOrBuild(const StorageIRI& key, const Builder& builder);
  void configure(boost::property_tree::ptree configuration);
  void shutdownAll();

 private:
  using Cache = std::map<StorageIRI, std::weak_ptr<IProvider>>;

  Cache snapshot() const;
  boost::property_tree::ptree storedConfiguration() const;

  Cache cache_;
  mutable std::mutex mutex_;
  boost::property_tree::ptree configuration_;
};

}  // namespace foundation::storage::provider::detail
