#include <foundation/core/except/Exception.h>
#include <foundation/core/except/IException.h>
#include <foundation/core/except/detail/AnonymousInternalException.h>

#include <gtest/gtest.h>

#include <atomic>
#include <exception>
#include <latch>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace foundation::core::except {
namespace {

/// Counts how often its text is put together.
class Counted : public Exception<IInternalException, std::exception> {
 public:
  explicit Counted(std::u16string text, std::atomic<int>* made = nullptr) : text_(std::move(text)), made_(made) {}
  void change(std::u16string text) {
    text_ = std::move(text);
    forgetText();
  }

 private:
  std::u16string ToUstringImpl() const override {
    if (made_ != nullptr)
      ++*made_;
    return text_;
  }
  std::u16string text_;
  std::atomic<int>* made_;
};

TEST(Except, GivesTheTextInBothWidths) {
  std::atomic<int> made = 0;
  Counted failure(u"größer € 😀", &made);
  EXPECT_STREQ(failure.what(), "größer € 😀");
  EXPECT_EQ(failure.what(), failure.what());
  EXPECT_EQ(made, 1);
  EXPECT_EQ(failure.toUstring(), u"größer € 😀");
  const Counted copy(failure);
  EXPECT_NE(copy.what(), failure.what());
  failure.change(u"another");
  EXPECT_STREQ(failure.what(), "another");
  EXPECT_STREQ(copy.what(), "größer € 😀");
}

TEST(Except, IsReadByManyThreadsThroughOnePointer) {
  for (int round = 0; round < 50; ++round) {
    const auto failure = std::make_exception_ptr(Counted(u"text"));
    std::vector<std::thread> threads;
    std::latch start(8);
    std::atomic<int> right = 0;
    for (int i = 0; i < 8; ++i)
      threads.emplace_back([&] {
        start.arrive_and_wait();
        try {
          std::rethrow_exception(failure);
        } catch (const std::exception& caught) {
          right += caught.what() == std::string("text") ? 1 : 0;
        }
      });
    for (auto& thread : threads)
      thread.join();
    EXPECT_EQ(right, 8);
  }
}

TEST(Except, AnonymousFailuresAreCaughtUnderAllTheirNames) {
  using detail::AnonymousInternalException;
  EXPECT_THROW(throw AnonymousInternalException<std::logic_error>("x"), std::logic_error);
  EXPECT_THROW(throw AnonymousInternalException<std::runtime_error>("x"), std::runtime_error);
  try {
    throw AnonymousInternalException<std::logic_error>("wörtlich");
  } catch (const IInternalException& failure) {
    EXPECT_STREQ(failure.what(), "wörtlich");
    EXPECT_EQ(failure.toUstring(), u"wörtlich");
  }
}

}  // namespace
}  // namespace foundation::core::except
