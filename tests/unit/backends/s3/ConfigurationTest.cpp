#include <foundation/storage/backend/s3/detail/Configuration.h>
#include <foundation/storage/backend/support/InvalidOptionException.h>

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace foundation::storage::backend::s3::detail {
namespace {

using boost::property_tree::ptree;
using client::Addressing;
using Texts = std::map<std::string, std::string>;

client::Settings read(const Texts& options, const Texts& variables = {}) {
  ptree tree;
  for (const auto& [key, value] : options)
    tree.put(key, value);
  return readConfiguration(tree, [variables](const std::string& name) {
    const auto found = variables.find(name);
    return found == variables.end() ? std::string() : found->second;
  });
}

TEST(ConfigurationTest, FindsTheStore) {
  const struct {
    Texts options;
    Texts variables;
    std::string endpoint;
    std::string region;
    Addressing addressing;
  } cases[] = {
      {{}, {}, "https://s3.us-east-1.amazonaws.com", "us-east-1", Addressing::VirtualHost},
      {{{"region", "eu-central-1"}},
       {{"AWS_REGION", "x"}},
       "https://s3.eu-central-1.amazonaws.com",
       "eu-central-1",
       Addressing::VirtualHost},
      {{},
       {{"AWS_DEFAULT_REGION", "y"}, {"AWS_ENDPOINT_URL", "http://store:7480"}},
       "http://store:7480",
       "y",
       Addressing::Path},
      {{{"endpoint", "http://mine"}},
       {{"AWS_ENDPOINT_URL_S3", "http://other"}},
       "http://mine",
       "us-east-1",
       Addressing::Path},
      {{{"endpoint", "http://mine"}, {"addressing", "virtual-host"}},
       {},
       "http://mine",
       "us-east-1",
       Addressing::VirtualHost},
      {{{"addressing", "path"}}, {}, "https://s3.us-east-1.amazonaws.com", "us-east-1", Addressing::Path},
      {{{"endpoint", "https://amazonaws.com.example.org:443"}},
       {},
       "https://amazonaws.com.example.org:443",
       "us-east-1",
       Addressing::Path},
  };
  for (const auto& row : cases) {
    const auto settings = read(row.options, row.variables);
    EXPECT_EQ(settings.endpoint, row.endpoint);
    EXPECT_EQ(settings.region, row.region);
    EXPECT_EQ(settings.addressing, row.addressing) << row.endpoint;
  }
}

TEST(ConfigurationTest, TakesKeysFromWhereTheyAreFirst) {
  const Texts variables{{"AWS_ACCESS_KEY_ID", "theirs"}, {"AWS_SECRET_ACCESS_KEY", "s"}};
  const auto own = read({{"access-key", "mine"}, {"secret-key", "t"}, {"session-token", "u"}}, variables).credentials();
  EXPECT_EQ(own.accessKey + own.secretKey + own.sessionToken, "minetu");
  EXPECT_EQ(read({}, variables).credentials().accessKey, "theirs");
  EXPECT_TRUE(read({}).credentials().isAnonymous());
  EXPECT_ANY_THROW(read({{"profile", "missing"}}, variables).credentials())
      << "a profile that is named has to be there";
}

TEST(ConfigurationTest, TakesNumbers) {
  const auto settings = read({{"ca-file", "/ca.pem"},
                              {"connect-timeout", "1"},
                              {"idle-timeout", "2"},
                              {"operation-timeout", "3"},
                              {"attempts", "4"},
                              {"part-size", "5242880"},
                              {"parallel-parts", "6"}});
  EXPECT_EQ(settings.http.caFile, "/ca.pem");
  EXPECT_EQ(settings.http.connectTimeout.count(), 1);
  EXPECT_EQ(settings.http.idleTimeout.count(), 2);
  EXPECT_EQ(settings.operationTimeout.count(), 3);
  EXPECT_EQ(settings.attempts, 4);
  EXPECT_EQ(settings.partSize, 5242880u);
  EXPECT_EQ(settings.parallelParts, 6u);
}

TEST(ConfigurationTest, NamesWhatItRefuses) {
  const struct {
    std::string key;
    Texts options;
  } cases[] = {
      {"no-such", {{"no-such", "1"}}},
      {"endpoint", {{"endpoint", "store:7480"}}},
      {"endpoint", {{"endpoint", "https://"}}},
      {"addressing", {{"addressing", "host"}}},
      {"secret-key", {{"access-key", "a"}}},
      {"access-key", {{"secret-key", "a"}}},
      {"session-token", {{"session-token", "a"}}},
      {"profile", {{"profile", "a"}, {"access-key", "a"}, {"secret-key", "a"}}},
      {"connect-timeout", {{"connect-timeout", "0"}}},
      {"idle-timeout", {{"idle-timeout", "1s"}}},
      {"operation-timeout", {{"operation-timeout", "4294967296"}}},
      {"attempts", {{"attempts", "0"}}},
      {"part-size", {{"part-size", "5242879"}}},
      {"part-size", {{"part-size", "5368709121"}}},
      {"parallel-parts", {{"parallel-parts", "0"}}},
      {"parallel-parts", {{"parallel-parts", "65"}}},
  };
  for (const auto& row : cases)
    try {
      read(row.options);
      ADD_FAILURE() << row.key;
    } catch (const support::InvalidOptionException& failure) {
      EXPECT_EQ(failure.getKey(), row.key) << failure.what();
    }
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail
