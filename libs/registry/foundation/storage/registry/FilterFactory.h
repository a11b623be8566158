#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/IProvider.h>

#include <boost/property_tree/ptree.hpp>

#include <memory>
#include <string>

namespace foundation::storage::registry {

/// Makes providers that put something between a program and the provider of another location: the location
/// "PREFIX+file:///a" is served by what the filter of that prefix makes around the provider of "file:///a".
///
/// Authors of filters derive from it. A provider that a filter makes
/// - gets locations with the prefix, in any case (RFC 3986, section 3.1), and hands them on without it;
/// - gives locations back with the prefix: canonical ones, those of change events and of `provider::Exception`;
/// - keeps the inner provider for as long as it lives, and lets others use it;
/// - when it is shut down, releases what it holds itself; the inner provider is not its own to shut down.
///
/// All operations may be called by any number of threads.
class FOUNDATION_EXPORT FilterFactory {
 public:
  /// With no provider yet, and no options.
  FilterFactory();
  FilterFactory(const FilterFactory&) = delete;
  FilterFactory& operator=(const FilterFactory&) = delete;
  virtual ~FilterFactory();

  /// A new provider around another one. Throws what the filter throws.
  /// @param inner   serves the locations without the prefix; not null
  /// @param prefix  under which the filter is registered, in lower case and without the '+'
  std::shared_ptr<provider::IProvider> buildProvider(std::shared_ptr<provider::IProvider> inner,
                                                     const std::u16string& prefix) const;

  /// Whether there is anything to configure.
  bool takesOptions() const { return doTakesOptions(); }

  /// Sets the options of all providers that this filter has made and will make; throws what the filter throws.
  /// Does nothing where it takes no options.
  void configure(boost::property_tree::ptree configuration);

 private:
  /// Builds a provider, never null; `inner` is not null.
  virtual std::shared_ptr<provider::IProvider> doBuildProvider(std::shared_ptr<provider::IProvider> inner,
                                                               const std::u16string& prefix) const = 0;
  /// Default: false. Override `doConfigure` along with it.
  virtual bool doTakesOptions() const;
  /// Default: does nothing.
  virtual void doConfigure(boost::property_tree::ptree configuration);
};

}  // namespace foundation::storage::registry
