#include <foundation/storage/backend/s3/detail/wire/Timestamp.h>

#include <boost/date_time/posix_time/conversion.hpp>
#include <curl/curl.h>

#include <algorithm>
#include <charconv>

namespace foundation::storage::backend::s3::detail::wire {

using boost::posix_time::ptime;

namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::system_clock;
using std::chrono::year_month_day;

constexpr int latestYear = 2200;
/// In seconds since 1970. What is later is no clock's, and a system_clock counts up to 2262 only.
constexpr auto latest =
    seconds(sys_days(year_month_day(std::chrono::year(latestYear), std::chrono::January, std::chrono::day(1)))
                .time_since_epoch())
        .count();

template <class Number>
std::string padded(Number number, std::size_t width) {
  const auto digits = std::to_string(number);
  return std::string(width - std::min(width, digits.size()), '0') + digits;
}

/// Whether a text has the layout of another one, in which '0' stands for any digit.
bool hasLayout(std::string_view text, std::string_view layout) {
  return std::equal(text.begin(), text.end(), layout.begin(), layout.end(),
                    [](char c, char wanted) { return wanted == '0' ? c >= '0' && c <= '9' : c == wanted; });
}

/// @param digits  nothing else, up to 9
int numberOf(std::string_view digits) {
  int number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

boost::posix_time::time_duration fractionOf(std::string_view digits) {
  auto micros = std::string(digits.substr(0, 6));
  micros.resize(6, '0');
  return boost::posix_time::microseconds(numberOf(micros));
}

}  // namespace

std::string basicDay(system_clock::time_point time) {
  const year_month_day day(std::chrono::floor<days>(time));
  return padded(static_cast<int>(day.year()), 4) + padded(static_cast<unsigned>(day.month()), 2) +
         padded(static_cast<unsigned>(day.day()), 2);
}

std::string basicTime(system_clock::time_point time) {
  const auto day = std::chrono::floor<days>(time);
  const std::chrono::hh_mm_ss clock(std::chrono::floor<seconds>(time - day));
  return basicDay(time) + "T" + padded(clock.hours().count(), 2) + padded(clock.minutes().count(), 2) +
         padded(clock.seconds().count(), 2) + "Z";
}

ptime parseIsoTime(std::string_view text) {
  constexpr std::string_view layout = "0000-00-00T00:00:00";
  if (!hasLayout(text.substr(0, layout.size()), layout) || !text.ends_with('Z'))
    return {};
  auto rest = text.substr(layout.size(), text.size() - layout.size() - 1);
  if (!rest.empty() && !(rest.front() == '.' && hasLayout(rest.substr(1), std::string(rest.size() - 1, '0'))))
    return {};
  const auto at = [text](std::size_t begin, std::size_t size = 2) { return numberOf(text.substr(begin, size)); };
  const year_month_day day{std::chrono::year(at(0, 4)), std::chrono::month(static_cast<unsigned>(at(5))),
                           std::chrono::day(static_cast<unsigned>(at(8)))};
  // Boost's calendar begins in 1400; no store holds anything that is older than its clock.
  if (!day.ok() || at(0, 4) < 1970 || at(0, 4) >= latestYear || at(11) > 23 || at(14) > 59 || at(17) > 60)
    return {};
  const auto sinceDay = std::chrono::hours(at(11)) + std::chrono::minutes(at(14)) + seconds(at(17));
  const auto sinceEpoch = sys_days(day).time_since_epoch() + sinceDay;
  return boost::posix_time::from_time_t(sinceEpoch.count()) + fractionOf(rest.substr(rest.empty() ? 0 : 1));
}

ptime parseHttpTime(std::string_view text) {
  const auto time = curl_getdate(std::string(text).c_str(), nullptr);
  return time < 0 || time >= latest ? ptime() : boost::posix_time::from_time_t(time);
}

}  // namespace foundation::storage::backend::s3::detail::wire
