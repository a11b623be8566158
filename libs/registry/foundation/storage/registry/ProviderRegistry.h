#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/Capability.h>
#include <foundation/storage/provider/ContainerProviderFactory.h>
#include <foundation/storage/provider/PhysicalProviderFactory.h>
#include <foundation/storage/provider/StorageIRI.h>
#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/registry/FilterFactory.h>
#include <foundation/storage/registry/Registration.h>

#include <boost/property_tree/ptree.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// From the text of a location to an item, by schemes and filters.
namespace foundation::storage::registry {

namespace detail {
struct RegistryState;
}

/// From the text of a location to the item that it names, by the schemes and filters that a program registers:
///
///     const auto registry = makeDefaultRegistry();
///     registry.item(u"file:///home/ann/notes.txt").copyFile(registry.item(u"memory:///notes"), options);
///     const auto safe = registry.item(u"readonly+file:///home/ann");
///
/// Names compare without case (RFC 3986, section 3.1), and stand for one thing in one role.
///
/// A registry is passed around by value: copies share all that is registered, and their providers. All operations
/// may be called by any number of threads; factories, filters and providers are called without any lock of the
/// registry's, and may use it themselves. Factories live as long as the registry; providers as long as their users
/// hold them.
class FOUNDATION_EXPORT ProviderRegistry {
 public:
  /// With nothing registered.
  ProviderRegistry();
  ProviderRegistry(const ProviderRegistry&) = default;
  ProviderRegistry& operator=(const ProviderRegistry&) = default;
  ~ProviderRegistry();

  // --- Registration ---

  /// Serves the locations of `scheme` that are in no container. Throws `InvalidRegistrationException` where the
  /// factory is null, or the name is no scheme (RFC 3986, section 3.1), holds a '+', or is registered already in
  /// whatever role.
  /// @param capabilities  for `registrations` to tell; nothing here goes by them
  void addPhysical(const std::u16string& scheme, std::shared_ptr<provider::PhysicalProviderFactory> factory,
                   provider::Capabilities capabilities = {});
  /// Serves the locations "SCHEME:INNER!/path", on top of the item of INNER. Throws as `addPhysical`.
  void addContainer(const std::u16string& scheme, std::shared_ptr<provider::ContainerProviderFactory> factory,
                    provider::Capabilities capabilities = {});
  /// Serves the locations whose scheme begins with "PREFIX+", on top of the provider of what follows. Throws as
  /// `addPhysical`.
  void addFilter(const std::u16string& prefix, std::shared_ptr<FilterFactory> filter);

  /// What is registered, by name.
  std::vector<Registration> registrations() const;

  // --- Items ---

  /// The item that `text` names, with this very location. Nothing needs to exist there; but opening a container
  /// may read it.
  ///
  /// Items with the same text have the same provider, as long as anybody holds it; so have items whose locations
  /// have the same filters around the same provider.
  ///
  /// Throws what the constructor of `StorageIRI` throws for a text that is no location; and `provider::Exception`,
  /// which says more in its context "registry",
  /// - with `UnsupportedOperation` and the location, or the inner one that it concerns, where a scheme or a filter
  ///   is not registered; the context names those that are;
  /// - with `InvalidLocation` where a container's scheme has no location of a container behind it, or a physical
  ///   one has; and for more than 16 filters in one scheme.
  ///
  /// What factories and filters throw passes through; a factory may throw for options that it was given before it
  /// had a provider that could refuse them.
  /// @{
  provider::StorageItem item(const std::u16string& text) const;
  provider::StorageItem item(const provider::StorageIRI& location) const;
  /// @}

  // --- Configuration and end ---

  /// Hands each scheme or filter its options: a subtree under its name. What is not named keeps its options. Keys
  /// are in UTF-8.
  ///
  ///     file { root "/srv" }
  ///     memory { capacity 1000 }
  ///
  /// Throws `InvalidConfigurationException`, with everything as before, for a name that is not registered or stands
  /// there twice, a value where a subtree belongs, and options of a filter that takes none.
  ///
  /// Options are checked by providers, so wrong ones show here where a provider is in use, and otherwise when one
  /// is built by `item`. Where one refuses with a `std::invalid_argument`, that is nested in the
  /// `InvalidConfigurationException` that is thrown with its name; what else is thrown passes through. The names
  /// before that one are configured then, those after it are not, and for it
  /// `provider::PhysicalProviderFactory::configure` says what holds.
  void configure(const boost::property_tree::ptree& configuration);

  /// The same with the tree that a file holds: Boost's INFO format where the name ends in ".info", JSON where it
  /// ends in ".json". (Files that an INFO file includes are found from the current folder.) Throws
  /// `ConfigurationFileException` for any other name, a file that cannot be read, and one that does not parse.
  void configureFromFile(const std::filesystem::path& file);

  /// Shuts down all providers that are in use, of filters first, of containers next, and lets go of them: who asks for
  /// an item afterwards gets new ones. Not coordinated with other uses of these providers. What a provider throws
  /// is thrown at the end, the first of several, once all factories and filters have had their turn;
  /// `provider::PhysicalProviderFactory::shutdownProvider` says what that means for others of the same factory.
  void shutdown();

 private:
  std::shared_ptr<detail::RegistryState> state_;
};

}  // namespace foundation::storage::registry
