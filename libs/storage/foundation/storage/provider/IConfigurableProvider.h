#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/IProvider.h>

#include <boost/property_tree/ptree.hpp>

namespace foundation::storage::provider {

/// Base of providers that take options.
class FOUNDATION_EXPORT IConfigurableProvider : public IProvider {
 public:
  IConfigurableProvider();
  ~IConfigurableProvider() override;

  /// Sets the provider's options; a key that is not given takes its default. Which keys there are is the back end's
  /// business: it refuses others, and values that it cannot take, with a `std::invalid_argument` that names the key,
  /// and everything is as before then. Any number of threads may call it, also while other operations run.
  void configure(boost::property_tree::ptree configuration);

 private:
  virtual void doConfigure(boost::property_tree::ptree configuration) = 0;
};

}  // namespace foundation::storage::provider
