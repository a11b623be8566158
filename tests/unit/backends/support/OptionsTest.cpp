#include <foundation/storage/backend/support/InvalidOptionException.h>
#include <foundation/storage/backend/support/Options.h>

#include <boost/property_tree/ptree.hpp>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>

namespace foundation::storage::backend::support {
namespace {

using boost::property_tree::ptree;

TEST(OptionsTest, ReadsWhatIsThere) {
  ptree tree;
  tree.put("capacity", 18446744073709551615u);
  tree.put("none", "0");
  tree.put("count", 5);
  tree.put("time", 2147483647);
  tree.put("on", true);
  tree.put("off", false);
  Options options(tree);
  EXPECT_EQ(options.takeBytes("capacity"), 18446744073709551615u);
  EXPECT_EQ(options.takeBytes("none"), 0u);
  EXPECT_EQ(options.takeNumber("count"), 5u);
  EXPECT_EQ(options.takeDuration("time"), std::chrono::milliseconds(2147483647));
  EXPECT_EQ(options.takeFlag("on"), true);
  EXPECT_EQ(options.takeFlag("off"), false);
  EXPECT_EQ(options.takeBytes("absent"), std::nullopt);
  EXPECT_EQ(options.takeDuration("absent"), std::nullopt);
  EXPECT_EQ(options.takeFlag("absent"), std::nullopt);
  EXPECT_NO_THROW(options.requireNoMore());
}

TEST(OptionsTest, NamesWhatItRefuses) {
  const auto bytes = [](Options& options) { options.takeBytes("x"); };
  const auto number = [](Options& options) { options.takeNumber("x"); };
  const auto duration = [](Options& options) { options.takeDuration("x"); };
  const auto flag = [](Options& options) { options.takeFlag("x"); };
  const auto none = [](Options& options) { options.requireNoMore(); };
  const struct {
    const char* value;
    std::function<void(Options&)> take;
    const char* text;
  } cases[] = {
      {"", bytes, "Option \"x\": \"\" is no number of bytes"},
      {"-1", bytes, "Option \"x\": \"-1\" is no number of bytes"},
      {"+1", bytes, "Option \"x\": \"+1\" is no number of bytes"},
      {" 1", bytes, "Option \"x\": \" 1\" is no number of bytes"},
      {"1k", bytes, "Option \"x\": \"1k\" is no number of bytes"},
      {"18446744073709551616", bytes, "Option \"x\": \"18446744073709551616\" is no number of bytes"},
      {"few", number, "Option \"x\": \"few\" is no number"},
      {"1s", duration, "Option \"x\": \"1s\" is no number of milliseconds"},
      {"2147483648", duration, "Option \"x\": it can be 2147483647 milliseconds at most"},
      {"yes", flag, "Option \"x\": \"yes\" is neither true nor false"},
      {"secret", none, "Option \"x\": this store has no such option"},
  };
  for (const auto& row : cases) {
    ptree tree;
    tree.put("x", row.value);
    Options options(tree);
    try {
      row.take(options);
      ADD_FAILURE() << row.text;
    } catch (const InvalidOptionException& failure) {
      EXPECT_STREQ(failure.what(), row.text);
      EXPECT_EQ(failure.getKey(), "x");
    }
  }
}

TEST(OptionsTest, RefusesWhatIsNoListOfOptions) {
  ptree nested;
  nested.put("a.b", 1);
  ptree twice;
  twice.add("a", 1);
  twice.add("a", 1);
  const auto read = [](const ptree& tree) {
    Options options(tree);
    options.takeText("a");
    options.requireNoMore();
  };
  for (const auto& tree : {ptree("value"), nested, twice})
    EXPECT_THROW(read(tree), InvalidOptionException);
}

}  // namespace
}  // namespace foundation::storage::backend::support
