#pragma once

#include <foundation/storage/backend/local/detail/posix/FileSystem.h>

#include <boost/property_tree/ptree_fwd.hpp>

#include <memory>

namespace foundation::storage::backend::local::detail {

/// What a provider is set to; operations that have begun keep the one that they began with.
struct Configuration {
  std::shared_ptr<const FileSystem> files = wholeFileSystem();
  bool isDurable = false;          ///< commits outlive a crash of the system
  bool hidesScratchFiles = false;  ///< from listings
};

/// Reads the options of a provider, as `LocalProviderFactory` has them. Throws `support::InvalidOptionException`.
Configuration readConfiguration(boost::property_tree::ptree options);

}  // namespace foundation::storage::backend::local::detail
