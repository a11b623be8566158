#pragma once

#include <functional>
#include <string>

namespace foundation::storage::backend::s3::detail::client {

/// Gives the variable of a name; empty where it is not set, which is the same.
using Environment = std::function<std::string(const std::string& name)>;

/// The environment of this process. Not to be asked while the program changes it.
std::string processEnvironment(const std::string& name);

/// What the usual variables say; empty where they say nothing.
/// @{
std::string regionOf(const Environment& environment);    ///< AWS_REGION, AWS_DEFAULT_REGION
std::string endpointOf(const Environment& environment);  ///< AWS_ENDPOINT_URL_S3, AWS_ENDPOINT_URL
/// @}

}  // namespace foundation::storage::backend::s3::detail::client
