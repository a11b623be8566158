#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/IProvider.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <boost/property_tree/ptree_fwd.hpp>

#include <memory>

namespace foundation::storage::provider {

namespace detail {
class ProviderFactoryImpl;
}

/// Hands out the providers of one kind of store, at most one live provider for each key: two locations
/// with the same key share their provider as long as anybody holds it.
///
///     auto provider = factory.buildProvider(StorageIRI(u"file:///home"));
///
/// Authors of back ends derive from it and say how a provider is built, and which locations share one.
///
/// A factory is passed around by value; copies share their providers and their configuration. Providers
/// are remembered weakly: they live as long as their users hold them. All operations may be called by
/// any number of threads.
class FOUNDATION_EXPORT PhysicalProviderFactory {
 public:
  /// With no provider yet, and no configuration.
  PhysicalProviderFactory();
  PhysicalProviderFactory(const PhysicalProviderFactory&) = default;
  PhysicalProviderFactory& operator=(const PhysicalProviderFactory&) = default;
  virtual ~PhysicalProviderFactory();

  /// The provider that serves `location`: the live one, or a new one, configured with what `configure` was
  /// last given. Throws what the back end throws, and is as before then.
  std::shared_ptr<IProvider> buildProvider(const StorageIRI& location) const;

  /// The key under which the provider of `location` is remembered.
  StorageIRI getKey(const StorageIRI& location) const { return doGetKey(location); }

  /// Configures all live providers that take options (`IConfigurableProvider`), and all that are built
  /// from now on. Where a provider refuses, those after it (in the order of their keys) stay as they
  /// were; new ones get the new configuration all the same. An empty tree configures nothing.
  /// Of two calls at once either may be the last, for each provider by itself.
  void configure(boost::property_tree::ptree configuration);

  /// Shuts all live providers down and forgets them; users that still hold one must not use it. Where
  /// a provider throws, nothing is forgotten. Until they are forgotten, `buildProvider` hands out providers that are
  /// shut down. One that is built meanwhile may be forgotten without being shut down.
  void shutdownProvider() const;

 private:
  /// Builds a new provider, not yet configured. Must not call this factory.
  virtual std::shared_ptr<IProvider> doBuildProvider(const StorageIRI& location) const = 0;
  /// What all locations served by one provider have in common, the root of the store for example.
  virtual StorageIRI doGetKey(const StorageIRI& location) const = 0;

  std::shared_ptr<detail::ProviderFactoryImpl> impl_;
};

}  // namespace foundation::storage::provider
