#include <foundation/storage/backend/s3/detail/client/CredentialsSource.h>

#include <foundation/storage/backend/s3/detail/client/StoreFailure.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <stdexcept>
#include <stdlib.h>
#include <vector>

namespace foundation::storage::backend::s3::detail::client {
namespace {

using Variables = std::map<std::string, std::string>;

Environment environmentOf(const Variables& variables) {
  return [variables](const std::string& name) {
    const auto found = variables.find(name);
    return found == variables.end() ? std::string() : found->second;
  };
}

std::string textOf(const wire::Credentials& credentials) {
  return credentials.accessKey + "|" + credentials.secretKey + "|" + credentials.sessionToken;
}

std::string taken(const CredentialsSource& source) {
  try {
    return textOf(source());
  } catch (const StoreFailure& failure) {
    EXPECT_EQ(failure.errorCode(), provider::ErrorCode::PermissionDenied);
    return failure.what();
  }
}

std::string takenFrom(const Variables& variables) { return taken(CredentialsSource(environmentOf(variables))); }

/// In a home folder of its own.
class CredentialsSourceTest : public ::testing::Test {
 protected:
  CredentialsSourceTest() {
    auto name = (std::filesystem::temp_directory_path() / "foundation-s3-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
      throw std::runtime_error("no temporary folder");
    home = name;
    std::filesystem::create_directory(home / ".aws");
  }
  ~CredentialsSourceTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(home, ignored);
  }

  void put(const std::string& content) const { std::ofstream(file(), std::ios::binary) << content; }
  std::string file() const { return (home / ".aws" / "credentials").string(); }

  /// @param age  in seconds
  void putAged(const std::string& content, int age) const {
    put(content);
    std::filesystem::last_write_time(file(), now - std::chrono::seconds(age));
  }

  std::filesystem::path home;
  const std::filesystem::file_time_type now = std::filesystem::file_time_type::clock::now();
};

std::string profile(const std::string& name, const std::string& key) {
  return "[" + name + "]\naws_access_key_id = " + key + "\naws_secret_access_key = s\n";
}

TEST_F(CredentialsSourceTest, TakesTheFirstThatSaysAnything) {
  EXPECT_EQ(takenFrom({}), "||");
  EXPECT_EQ(takenFrom({{"HOME", home}}), "||");
  put(profile("default", "d") + profile("work.eu", "w"));
  EXPECT_EQ(takenFrom({{"HOME", home}}), "d|s|");
  EXPECT_EQ(takenFrom({{"HOME", home}, {"AWS_PROFILE", "work.eu"}}), "w|s|");
  EXPECT_EQ(takenFrom({{"AWS_SHARED_CREDENTIALS_FILE", file()}}), "d|s|");
  Variables variables{{"HOME", home}, {"AWS_ACCESS_KEY_ID", "a"}, {"AWS_SECRET_ACCESS_KEY", "b"}};
  EXPECT_EQ(takenFrom(variables), "a|b|");
  variables.emplace("AWS_SESSION_TOKEN", "c");
  EXPECT_EQ(takenFrom(variables), "a|b|c");
}

TEST_F(CredentialsSourceTest, ReadsTheUsualForms) {
  for (const auto* const content :
       {"[default]\naws_access_key_id=a\naws_secret_access_key=b/+=c\naws_session_token=t==",
        "# a comment\r\n\r\n; another\r\n [default] \r\n\taws_access_key_id  =  a \r\naws_secret_access_key = b/+=c\r\n"
        "region = eu\r\naws_session_token = t==\r\n"}) {
    put(content);
    EXPECT_EQ(takenFrom({{"HOME", home}}), "a|b/+=c|t==") << content;
  }
  for (const auto* const content : {"", "# nothing\n", "[default]\n", "[other]\naws_access_key_id = a\n"}) {
    put(content);
    EXPECT_EQ(takenFrom({{"HOME", home}}), "||") << content;
  }
}

TEST_F(CredentialsSourceTest, NamesFileLineAndReasonOfWhatIsWrong) {
  const std::string start = "There are no usable credentials: ";
  const auto at = start + file();
  const auto missing = (home / "missing").string();
  struct Case {
    std::string content;
    Variables variables;
    std::string begins;  ///< the rest is the parser's
  };
  for (const auto& [content, more, begins] : std::vector<Case>{
           {"[default]\naws_access_key_id = a\nsecret\n", {}, at + ":3: "},
           {"[default\n", {}, at + ":1: "},
           {profile("default", "d") + profile("default", "e"), {}, at + ":4: "},
           {"[default]\naws_access_key_id = a\n", {}, at + ": the profile \"default\" has no aws_secret_access_key"},
           {"[default]\naws_access_key_id =\naws_secret_access_key = b\n",
            {},
            at + ": the profile \"default\" has no aws_access_key_id"},
           {profile("default", "d"),
            {{"AWS_PROFILE", "work"}},
            at + ": there is no profile \"work\", but AWS_PROFILE names it"},
           {"",
            {{"AWS_SHARED_CREDENTIALS_FILE", missing}},
            start + missing + ": there is no such file, but AWS_SHARED_CREDENTIALS_FILE names it"},
           {"", {{"AWS_ACCESS_KEY_ID", "a"}}, start + "of AWS_ACCESS_KEY_ID and AWS_SECRET_ACCESS_KEY only one is set"},
           {"", {{"AWS_SHARED_CREDENTIALS_FILE", home}}, start + home.string() + ":1: "}}) {
    put(content);
    auto variables = more;
    variables.emplace("HOME", home);
    EXPECT_EQ(takenFrom(variables).substr(0, begins.size()), begins) << content;
  }
}

TEST_F(CredentialsSourceTest, ReadsTheFileAgainAfterItHasChanged) {
  const CredentialsSource source(environmentOf({{"HOME", home}}));
  const std::function<wire::Credentials()> copy = source;
  EXPECT_EQ(taken(source), "||");
  put(profile("default", "a"));
  EXPECT_EQ(taken(source), "a|s|");
  put(profile("default", "b"));
  EXPECT_EQ(taken(source), "b|s|") << "within one tick of the file's time, perhaps";
  putAged(profile("default", "c"), 60);
  EXPECT_EQ(taken(source), "c|s|");
  putAged(profile("default", "d"), 30);
  EXPECT_EQ(taken(source), "d|s|");
  putAged(profile("default", "e"), 30);
  EXPECT_EQ(textOf(copy()), "d|s|") << "looks the same, and is not read at each request";
  putAged("[", 20);
  EXPECT_NE(taken(source).find(file() + ":1: "), std::string::npos);
  EXPECT_NE(taken(source).find(file() + ":1: "), std::string::npos) << "a failure is no credentials";
  putAged(profile("default", "f"), 20);
  EXPECT_EQ(taken(source), "f|s|");
  std::filesystem::remove(file());
  EXPECT_EQ(taken(source), "||");
}

TEST(EnvironmentTest, PrefersTheMoreSpecificVariable) {
  Variables variables{{"AWS_DEFAULT_REGION", "a"}, {"AWS_ENDPOINT_URL", "http://a"}};
  EXPECT_EQ(regionOf(environmentOf({})), "");
  EXPECT_EQ(regionOf(environmentOf(variables)), "a");
  EXPECT_EQ(endpointOf(environmentOf(variables)), "http://a");
  variables.insert({{"AWS_REGION", "b"}, {"AWS_ENDPOINT_URL_S3", "http://b"}});
  EXPECT_EQ(regionOf(environmentOf(variables)), "b");
  EXPECT_EQ(endpointOf(environmentOf(variables)), "http://b");
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::client
