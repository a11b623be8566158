#pragma once

#include <foundation/storage/backend/s3/detail/client/Environment.h>
#include <foundation/storage/backend/s3/detail/client/Settings.h>

#include <boost/property_tree/ptree.hpp>

namespace foundation::storage::backend::s3::detail {

/// Reads the options of a provider, as `S3ProviderFactory` has them; what they leave open, the environment gives.
/// Throws `support::InvalidOptionException`.
client::Settings readConfiguration(boost::property_tree::ptree options,
                                   const client::Environment& environment = client::processEnvironment);

}  // namespace foundation::storage::backend::s3::detail
