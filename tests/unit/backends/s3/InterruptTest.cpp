#include <foundation/storage/backend/s3/detail/http/Interrupt.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

namespace foundation::storage::backend::s3::detail::http {
namespace {

using namespace std::chrono_literals;

TEST(InterruptTest, WakesWhoeverWaits) {
  Interrupt interrupt;
  EXPECT_FALSE(interrupt.waitFor(0ms));
  std::thread raiser([&] { interrupt.raise(); });
  EXPECT_TRUE(interrupt.waitFor(1h));
  raiser.join();
  EXPECT_TRUE(interrupt.isRaised()) << "once raised, it stays so";
}

TEST(InterruptTest, AsksItsQuestionWhileItWaits) {
  std::atomic<int> asked = 0;
  Interrupt interrupt([&] { return ++asked == 3; });
  EXPECT_TRUE(interrupt.waitFor(1h));
  EXPECT_EQ(asked, 3);
  EXPECT_TRUE(interrupt.isRaised());
  EXPECT_EQ(asked, 3) << "an answer is not asked for again";
}

TEST(InterruptTest, WaitsForNoAnswerThatAnotherThreadAsksFor) {
  std::promise<void> asked;
  std::promise<void> answered;
  Interrupt interrupt([&] {
    asked.set_value();
    answered.get_future().wait();
    return true;
  });
  auto asking = std::async(std::launch::async, [&] { return interrupt.isRaised(); });
  asked.get_future().wait();
  EXPECT_FALSE(interrupt.isRaised());
  answered.set_value();
  EXPECT_TRUE(asking.get());
  EXPECT_TRUE(interrupt.isRaised());
}

TEST(InterruptTest, TellsListeners) {
  Interrupt interrupt;
  int told = 0;
  {
    const Interrupt::Listener gone(interrupt, [&] { told += 100; });
  }
  const Interrupt::Listener early(interrupt, [&] { ++told; });
  interrupt.raise();
  interrupt.raise();
  EXPECT_EQ(told, 1);
  const Interrupt::Listener late(interrupt, [&] { ++told; });
  EXPECT_EQ(told, 2);
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::http
