#include <foundation/storage/backend/s3/detail/client/Environment.h>

#include <cstdlib>

namespace foundation::storage::backend::s3::detail::client {

namespace {

std::string firstOf(const Environment& environment, const char* name, const char* otherwise) {
  auto value = environment(name);
  return value.empty() ? environment(otherwise) : value;
}

}  // namespace

std::string processEnvironment(const std::string& name) {
  const auto* const value = std::getenv(name.c_str());
  return value ? value : "";
}

std::string regionOf(const Environment& environment) {
  return firstOf(environment, "AWS_REGION", "AWS_DEFAULT_REGION");
}

std::string endpointOf(const Environment& environment) {
  return firstOf(environment, "AWS_ENDPOINT_URL_S3", "AWS_ENDPOINT_URL");
}

}  // namespace foundation::storage::backend::s3::detail::client
