#include <foundation/storage/backend/s3/detail/Configuration.h>

#include <foundation/storage/backend/s3/detail/client/CredentialsSource.h>
#include <foundation/storage/backend/s3/detail/client/Endpoint.h>
#include <foundation/storage/backend/s3/detail/client/StoreFailure.h>
#include <foundation/storage/backend/support/InvalidOptionException.h>
#include <foundation/storage/backend/support/Options.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace foundation::storage::backend::s3::detail {

using client::Addressing;
using client::Environment;
using client::Settings;
using support::InvalidOptionException;
using support::Options;

namespace {

constexpr std::uint64_t smallestPart = 5ull << 20;  // docs.aws.amazon.com, "Amazon S3 multipart upload limits"
constexpr std::uint64_t largestPart = 5ull << 30;
constexpr std::uint64_t mostAttempts = 100;
constexpr std::uint64_t mostParallelParts = 64;

/// The first that is not empty.
std::string firstOf(std::optional<std::string> option, std::string variable, std::string otherwise) {
  if (option && !option->empty())
    return *std::move(option);
  return variable.empty() ? std::move(otherwise) : std::move(variable);
}

std::uint64_t requireBetween(const char* key, std::uint64_t least, std::uint64_t most, std::uint64_t number) {
  if (number < least || number > most)
    throw InvalidOptionException(key, "it has to be " + std::to_string(least) + " to " + std::to_string(most));
  return number;
}

std::chrono::milliseconds takeTimeout(Options& options, const char* key, std::chrono::milliseconds otherwise) {
  const auto time = options.takeDuration(key).value_or(otherwise);
  if (time.count() == 0)
    throw InvalidOptionException(key, "it has to be 1 at least");
  return time;
}

bool isAmazons(std::string_view endpoint) {
  const auto host = endpoint.substr(0, endpoint.find_first_of(":/", endpoint.find("//") + 2));
  return host.ends_with(".amazonaws.com") || host.ends_with(".amazonaws.com.cn");
}

Addressing takeAddressing(Options& options, std::string_view endpoint) {
  const auto text = options.takeText("addressing");
  if (text && *text != "path" && *text != "virtual-host")
    throw InvalidOptionException("addressing", "\"" + *text + "\" is neither path nor virtual-host");
  const bool usesHost = text ? *text == "virtual-host" : isAmazons(endpoint);
  return usesHost ? Addressing::VirtualHost : Addressing::Path;
}

void takeEndpoint(Options& options, const Environment& environment, Settings& settings) {
  settings.region = firstOf(options.takeText("region"), client::regionOf(environment), settings.region);
  settings.endpoint = firstOf(options.takeText("endpoint"), client::endpointOf(environment),
                              "https://s3." + settings.region + ".amazonaws.com");
  settings.addressing = takeAddressing(options, settings.endpoint);
  try {
    client::Endpoint(settings.endpoint, settings.addressing);
  } catch (const client::StoreFailure& failure) {
    throw InvalidOptionException("endpoint", failure.what());
  }
}

/// A profile that is asked for goes before what the environment says of keys.
Environment withProfile(const Environment& environment, const std::string& profile) {
  return [environment, profile](const std::string& name) {
    if (name == "AWS_PROFILE")
      return profile;
    const bool isKey = name == "AWS_ACCESS_KEY_ID" || name == "AWS_SECRET_ACCESS_KEY" || name == "AWS_SESSION_TOKEN";
    return isKey ? std::string() : environment(name);
  };
}

void takeCredentials(Options& options, const Environment& environment, Settings& settings) {
  const auto accessKey = options.takeText("access-key").value_or(std::string());
  const auto secretKey = options.takeText("secret-key").value_or(std::string());
  const auto token = options.takeText("session-token").value_or(std::string());
  const auto profile = options.takeText("profile");
  if (accessKey.empty() != secretKey.empty())
    throw InvalidOptionException(accessKey.empty() ? "access-key" : "secret-key", "one key is of no use alone");
  if (!token.empty() && accessKey.empty())
    throw InvalidOptionException("session-token", "it goes with access-key and secret-key");
  if (profile && !accessKey.empty())
    throw InvalidOptionException("profile", "access-key and secret-key are given, too");
  if (!accessKey.empty())
    settings.credentials = [credentials = wire::Credentials{accessKey, secretKey, token}] { return credentials; };
  else
    settings.credentials = client::CredentialsSource(profile ? withProfile(environment, *profile) : environment);
}

void takeTransport(Options& options, Settings& settings) {
  settings.http.caFile = options.takeText("ca-file").value_or(std::string());
  settings.http.connectTimeout = takeTimeout(options, "connect-timeout", settings.http.connectTimeout);
  settings.http.idleTimeout = takeTimeout(options, "idle-timeout", settings.http.idleTimeout);
  settings.operationTimeout = takeTimeout(options, "operation-timeout", settings.operationTimeout);
  const auto attempts = options.takeNumber("attempts").value_or(static_cast<std::uint64_t>(settings.attempts));
  settings.attempts = static_cast<int>(requireBetween("attempts", 1, mostAttempts, attempts));
}

void takeParts(Options& options, Settings& settings) {
  const auto size = options.takeBytes("part-size").value_or(settings.partSize);
  const auto count = options.takeNumber("parallel-parts").value_or(settings.parallelParts);
  settings.partSize = requireBetween("part-size", smallestPart, largestPart, size);
  settings.parallelParts = static_cast<unsigned>(requireBetween("parallel-parts", 1, mostParallelParts, count));
}

}  // namespace

Settings readConfiguration(boost::property_tree::ptree tree, const Environment& environment) {
  Options options(std::move(tree));
  Settings settings;
  takeEndpoint(options, environment, settings);
  takeCredentials(options, environment, settings);
  takeTransport(options, settings);
  takeParts(options, settings);
  options.requireNoMore();
  return settings;
}

}  // namespace foundation::storage::backend::s3::detail
