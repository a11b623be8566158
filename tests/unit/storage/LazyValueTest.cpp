#include <foundation/storage/provider/detail/LazyValue.h>
#include <foundation/storage/testing/Together.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <vector>

namespace foundation::storage::provider::detail {
namespace {

TEST(LazyValue, IsComputedOnceByConcurrentFirstReaders) {
  for (int round = 0; round < 200; ++round) {
    const LazyValue<std::string> value;
    std::atomic<int> calls{0};
    std::vector<const std::string*> seen(8);
    testing::together(8, [&](std::size_t number) {
      seen[number] = &value.get([&calls] { return std::to_string(++calls) + std::string(100, 'x'); });
    });
    ASSERT_EQ(calls, 1);
    ASSERT_EQ(seen, std::vector<const std::string*>(8, seen.front()));
    ASSERT_EQ(seen.front()->size(), 101u);
  }
}

TEST(LazyValue, IsComputedAgainAfterAThrow) {
  for (int round = 0; round < 200; ++round) {
    const LazyValue<int> value;
    std::atomic<int> calls{0};
    std::atomic<int> failed{0};
    testing::together(4, [&](std::size_t) {
      try {
        value.get([&calls] { return ++calls < 3 ? throw std::runtime_error("not yet") : 7; });
      } catch (const std::runtime_error&) {
        ++failed;
      }
    });
    ASSERT_EQ(failed, 2);
    ASSERT_EQ(calls, 3);
    ASSERT_EQ(value.get([]() -> int { throw std::logic_error("computed anew"); }), 7);
  }
}

}  // namespace
}  // namespace foundation::storage::provider::detail
