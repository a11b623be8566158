#include <foundation/storage/backend/s3/detail/wire/Timestamp.h>

#include <boost/date_time/posix_time/posix_time_io.hpp>
#include <gtest/gtest.h>

#include <vector>

namespace foundation::storage::backend::s3::detail::wire {
namespace {

using boost::posix_time::ptime;
using namespace std::chrono_literals;

const ptime october(boost::gregorian::date(2009, 10, 12), boost::posix_time::time_duration(17, 50, 30));

TEST(TimestampTest, WritesBasicTimes) {
  const std::chrono::system_clock::time_point time = std::chrono::sys_days(std::chrono::March / 1 / 2024) - 1s;
  EXPECT_EQ(basicTime(time + 999ms), "20240229T235959Z");
  EXPECT_EQ(basicDay(time), "20240229");
  EXPECT_EQ(basicTime(time + 1s), "20240301T000000Z");
}

TEST(TimestampTest, ReadsTimesOfDocuments) {
  using boost::posix_time::microseconds;
  EXPECT_EQ(parseIsoTime("2009-10-12T17:50:30.000Z"), october);
  EXPECT_EQ(parseIsoTime("2009-10-12T17:50:30Z"), october);
  EXPECT_EQ(parseIsoTime("2009-10-12T17:50:30.25Z"), october + microseconds(250'000));
  EXPECT_EQ(parseIsoTime("2009-10-12T17:50:30.123456789Z"), october + microseconds(123'456));
  EXPECT_EQ(parseIsoTime("2024-02-29T00:00:00Z"), ptime(boost::gregorian::date(2024, 2, 29)));
  for (const auto* const text :
       {"", "Z", "2009-10-12T17:50:30", "2009-10-12 17:50:30Z", "2009-10-12T17:50:30.0x0Z", "2009-13-12T17:50:30Z",
        "2023-02-29T00:00:00Z", "2009-10-12T24:50:30Z", "2009-10-12T17:60:30Z", "2009-10-12T17:50:61Z",
        "0001-01-01T00:00:00Z", "9999-12-31T23:59:60Z", "2009-10-12T17:50:30+Z", "+009-10-12T17:50:30Z"})
    EXPECT_TRUE(parseIsoTime(text).is_not_a_date_time()) << text;
}

TEST(TimestampTest, ReadsTimesOfHeaders) {
  for (const auto* const text :
       {"Mon, 12 Oct 2009 17:50:30 GMT", "Monday, 12-Oct-09 17:50:30 GMT", "Mon Oct 12 17:50:30 2009"})
    EXPECT_EQ(parseHttpTime(text), october) << text;
  for (const auto* const text : {"", "yesterday", "Mon, 32 Oct 2009 17:50:30 GMT", "Mon, 12 Oct 2009 25:50:30 GMT",
                                 "Mon, 12 Oct 999999 17:50:30 GMT", "Mon, 12 Oct 1909 17:50:30 GMT"})
    EXPECT_TRUE(parseHttpTime(text).is_not_a_date_time()) << text;
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::wire
