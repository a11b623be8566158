#include "support/LogRecords.h"
#include <foundation/log/DiagnosticLogger.h>
#include <foundation/log/detail/ExceptionChain.h>

#include <boost/exception/enable_current_exception.hpp>
#include <boost/exception/errinfo_nested_exception.hpp>
#include <boost/exception_ptr.hpp>
#include <boost/log/core/core.hpp>
#include <boost/log/utility/exception_handler.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace foundation::log {
namespace {

using test::Record;

class DiagnosticLoggerTest : public testing::Test {
 protected:
  std::vector<Record> records() const { return log_.all(); }
  void setFailing(bool fails) { log_.setFailing(fails); }

 private:
  test::LogRecords log_;
};

TEST_F(DiagnosticLoggerTest, WritesWhatTheChannelLetsThrough) {
  const diagnostic_logger first("test::a"), second("test::a"), other("test::b");
  first.write(Level::error, "before it was opened");
  openChannel("test::a", Level::error);
  first.write(Level::error, "one");
  first.write(Level::detail, "not grave enough");
  other.write(Level::error, "another channel");
  openChannel("test::a", Level::detail);
  second.write(Level::detail, "two");
  const diagnostic_logger later("test::a");
  EXPECT_TRUE(later.passes(Level::detail));
  closeChannel("test::a");
  EXPECT_FALSE(later.passes(Level::error));
  later.write(Level::error, "after it was closed");
  EXPECT_EQ(records(), (std::vector<Record>{{"test::a", 0x200, "one"}, {"test::a", 0x10, "two"}}));
}

TEST_F(DiagnosticLoggerTest, KeepsAFailingSinkFromTheWriter) {
  const diagnostic_logger logger("test::failing");
  openChannel("test::failing", Level::error);
  setFailing(true);
  EXPECT_NO_THROW(logger.write(Level::error, "lost"));
  std::string told;
  const auto tell = [&told](const std::runtime_error& failure) { told = failure.what(); };
  boost::log::core::get()->set_exception_handler(boost::log::make_exception_handler<std::runtime_error>(tell));
  EXPECT_NO_THROW(logger.write(Level::error, "lost, and told"));
  boost::log::core::get()->set_exception_handler(boost::log::core::exception_handler_type());
  setFailing(false);
  logger.write(Level::error, "kept");
  closeChannel("test::failing");
  EXPECT_EQ(told, "the disk is full");
  EXPECT_EQ(records(), (std::vector<Record>{{"test::failing", 0x200, "kept"}}));
}

TEST_F(DiagnosticLoggerTest, TakesRecordsFromManyThreads) {
  const diagnostic_logger logger("test::threads");
  openChannel("test::threads", Level::detail);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&logger] {
      for (int n = 0; n < 100; ++n)
        logger.write(Level::detail, "record");
    });
  for (auto& thread : threads)
    thread.join();
  closeChannel("test::threads");
  EXPECT_EQ(records().size(), 400u);
}

TEST(ExceptionChain, TellsAllCausesOutermostFirst) {
  using detail::current_exception_chain_as_string;
  EXPECT_EQ(current_exception_chain_as_string(), "no exception");
  try {
    try {
      try {
        throw 42;
      } catch (...) {
        std::throw_with_nested(std::runtime_error("inner"));
      }
    } catch (...) {
      std::throw_with_nested(std::logic_error("outer"));
    }
  } catch (...) {
    EXPECT_EQ(current_exception_chain_as_string(), "outer; caused by: inner; caused by: exception of an unknown type");
  }
}

TEST(ExceptionChain, FollowsBoostsNesting) {
  struct Failure : std::runtime_error, boost::exception {
    using std::runtime_error::runtime_error;
  };
  try {
    try {
      throw boost::enable_current_exception(Failure("inner"));
    } catch (...) {
      throw Failure("outer") << boost::errinfo_nested_exception(boost::current_exception());
    }
  } catch (...) {
    EXPECT_EQ(detail::current_exception_chain_as_string(), "outer; caused by: inner");
  }
}

TEST(ExceptionChain, EndsWhereverTheNestingLeads) {
  std::exception_ptr chain;
  for (int link = 0; link < 1000; ++link) {
    try {
      if (chain != nullptr)
        std::rethrow_exception(chain);
      throw std::runtime_error("x");
    } catch (...) {
      try {
        std::throw_with_nested(std::runtime_error("x"));
      } catch (...) {
        chain = std::current_exception();
      }
    }
  }
  try {
    std::rethrow_exception(chain);
  } catch (...) {
    const auto text = detail::current_exception_chain_as_string();
    EXPECT_TRUE(text.ends_with("x; and so on"));
    EXPECT_EQ(std::count(text.begin(), text.end(), 'x'), 32);
  }
}

}  // namespace
}  // namespace foundation::log
