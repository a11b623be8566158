// Options for all schemes at once, from trees and files.

#include "Stores.h"

#include <foundation/storage/registry/ConfigurationFileException.h>
#include <foundation/storage/registry/InvalidConfigurationException.h>

#include <boost/property_tree/info_parser.hpp>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <unistd.h>

namespace foundation::storage::registry {
namespace {

using boost::property_tree::ptree;

class ConfigurationTest : public ::testing::Test {
 protected:
  ConfigurationTest() { std::filesystem::create_directory(folder); }
  ~ConfigurationTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }

  static ptree tree(const std::string& text) {
    std::istringstream in(text);
    ptree parsed;
    read_info(in, parsed);
    return parsed;
  }

  std::filesystem::path file(const std::string& name, const std::string& text) const {
    const auto path = folder / name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }

  std::uint64_t capacity() const { return store.getProviderStorageInfo().getStorageCapacity(); }

  /// The key of which a configuration is refused.
  std::string refusedKey(const ptree& configuration) {
    try {
      registry.configure(configuration);
    } catch (const InvalidConfigurationException& refused) {
      EXPECT_EQ(std::string(refused.what()).find("Configuration of \"" + refused.getKey() + "\": "), 0u);
      return refused.getKey();
    }
    return "none";
  }

  const std::filesystem::path folder =
      std::filesystem::path(::testing::TempDir()) /
      ("foundation-registry-" + std::to_string(std::hash<const void*>()(this)) + "-" + std::to_string(::getpid()));
  ProviderRegistry registry = makeDefaultRegistry();
  const StorageItem store = registry.item(u"memory:///");
};

TEST_F(ConfigurationTest, ReachesProvidersThatAreThereAndThoseToCome) {
  registry.configure(tree("Memory { capacity 1000 }"));
  EXPECT_EQ(capacity(), 1000u);
  EXPECT_EQ(registry.item(u"memory://later/").getProviderStorageInfo().getStorageCapacity(), 1000u);
  EXPECT_EQ(registry.item(u"readonly+memory:///").getProviderStorageInfo().getStorageCapacity(), 1000u);
  registry.configure(tree("readonly { }"));
  registry.configure({});
  EXPECT_EQ(capacity(), 1000u) << "what is not named keeps its options";
}

TEST_F(ConfigurationTest, RefusesAWrongShapeBeforeAnythingIsConfigured) {
  const std::string good = "memory { capacity 1000 }\n";
  for (const auto& [text, key] : std::map<std::string, std::string>{{"ftp { a b }", "ftp"},
                                                                    {"file text", "file"},
                                                                    {"readonly { a b }", "readonly"},
                                                                    {"MEMORY { }", "MEMORY"},
                                                                    {"\"\" { a b }", ""},
                                                                    {"f\u00E4le { a b }", "f\u00E4le"}}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(refusedKey(tree(good + text)), key);
  }
  auto nameless = tree(good);
  nameless.data() = "value";
  EXPECT_EQ(refusedKey(nameless), "value");
  EXPECT_NE(capacity(), 1000u);
}

TEST_F(ConfigurationTest, TellsOfOptionsThatAProviderRefuses) {
  try {
    registry.configure(tree("memory { speed 1 }"));
    ADD_FAILURE() << "nothing was thrown";
  } catch (const InvalidConfigurationException& refused) {
    EXPECT_EQ(refused.getKey(), "memory");
    EXPECT_NE(std::string(refused.what()).find("\"speed\""), std::string::npos) << refused.what();
    EXPECT_THROW(std::rethrow_if_nested(refused), std::invalid_argument);
  }
  EXPECT_THROW(registry.item(u"memory://later/"), std::invalid_argument) << "nobody could refuse it before";
  registry.configure(tree("memory { capacity 7 }"));
  EXPECT_EQ(registry.item(u"memory://later/").getProviderStorageInfo().getStorageCapacity(), 7u);
}

TEST_F(ConfigurationTest, ReadsFilesInBothFormats) {
  registry.configureFromFile(file("good one.info", "; a comment\nmemory {\n  capacity 10\n}\n"));
  EXPECT_EQ(capacity(), 10u);
  registry.configureFromFile(file("good.json", R"({"memory": {"capacity": 20}, "readonly": {}})"));
  EXPECT_EQ(capacity(), 20u);
  registry.configureFromFile(file("empty.info", ""));
  EXPECT_EQ(capacity(), 20u);
  EXPECT_THROW(registry.configureFromFile(file("list.json", R"(["memory"])")), InvalidConfigurationException);
}

TEST_F(ConfigurationTest, NamesFileAndLineOfWhatItCannotRead) {
  std::filesystem::create_directory(folder / "folder.info");
  for (const auto& [path, line] : std::map<std::filesystem::path, unsigned long>{
           {file("broken.info", "memory {\n  capacity 10\n}\n}\n"), 4},
           {file("broken.json", "{\n\"memory\": {\n\"capacity\": 10,\n}\n}"), 4},
           {file("empty.json", ""), 1},
           {file("deep.info", std::string(20'000, '{')), 0},
           {file("deep.json", std::string(20'000, '[')), 0},
           {file("good.xml", ""), 0},
           {file("good", ""), 0},
           {folder / "missing.info", 0},
           {folder / "folder.info", 0}}) {
    SCOPED_TRACE(path.string());
    try {
      registry.configureFromFile(path);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const ConfigurationFileException& broken) {
      EXPECT_EQ(broken.getFile(), path);
      EXPECT_EQ(broken.getLine(), line);
      const auto place = path.string() + (line == 0 ? "" : ":" + std::to_string(line)) + ": ";
      EXPECT_EQ(std::string(broken.what()).find(place), 0u) << broken.what();
    }
  }
}

}  // namespace
}  // namespace foundation::storage::registry
