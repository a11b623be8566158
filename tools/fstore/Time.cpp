#include <fstore/Time.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <array>
#include <cstdio>
#include <stdexcept>

namespace fstore {

using boost::posix_time::ptime;

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Reads a text from left to right; once something is not as it should be, it stays failed.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  int number(std::size_t digits) {
    int value = 0;
    for (std::size_t i = 0; i < digits; ++i)
      value = value * 10 + (take(isDigit(next())) - '0');
    return value;
  }
  void expect(std::string_view oneOf) { take(oneOf.find(next()) != std::string_view::npos); }
  bool accept(char c) { return next() == c && take(true) == c; }
  bool sees(bool (*matches)(char)) const { return matches(next()); }
  bool isAtEnd() const { return rest_.empty(); }
  bool isWell() const { return isWell_; }

 private:
  char next() const { return rest_.empty() ? '\0' : rest_.front(); }
  char take(bool fits) {
    isWell_ = isWell_ && fits && !rest_.empty();
    if (!isWell_)
      return '0';
    const char taken = rest_.front();
    rest_.remove_prefix(1);
    return taken;
  }

  std::string_view rest_;
  bool isWell_ = true;
};

long microseconds(Scanner& scanner) {
  long value = 0;
  int digits = 0;
  do {  // at least one; more than the clock has are read and dropped
    const int digit = scanner.number(1);
    if (digits++ < 6)
      value = value * 10 + digit;
  } while (scanner.sees(isDigit));
  for (; digits < 6; ++digits)
    value *= 10;
  return value;
}

std::optional<boost::posix_time::time_duration> clock(Scanner& scanner) {
  scanner.expect("T ");
  const int hours = scanner.number(2);
  scanner.expect(":");
  const int minutes = scanner.number(2);
  scanner.expect(":");
  const int seconds = scanner.number(2);
  const long fraction = scanner.accept('.') ? microseconds(scanner) : 0;
  scanner.accept('Z');
  if (hours > 23 || minutes > 59 || seconds > 59)
    return std::nullopt;
  return boost::posix_time::time_duration(hours, minutes, seconds) + boost::posix_time::microseconds(fraction);
}

}  // namespace

std::optional<ptime> parseTime(std::string_view text) {
  Scanner scanner(text);
  const int year = scanner.number(4);
  scanner.expect("-");
  const int month = scanner.number(2);
  scanner.expect("-");
  const int day = scanner.number(2);
  std::optional<boost::posix_time::time_duration> time(boost::posix_time::seconds(0));
  if (!scanner.isAtEnd())
    time = clock(scanner);
  if (!scanner.isWell() || !scanner.isAtEnd() || !time)
    return std::nullopt;
  try {
    return ptime(boost::gregorian::date(static_cast<unsigned short>(year), static_cast<unsigned short>(month),
                                        static_cast<unsigned short>(day)),
                 *time);
  } catch (const std::out_of_range&) {  // no such day
    return std::nullopt;
  }
}

std::optional<std::string> isoText(const ptime& time) {
  if (time.is_special())
    return std::nullopt;
  const auto day = time.date().year_month_day();
  const auto clock = time.time_of_day();
  std::array<char, 80> text;
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%06ldZ", static_cast<int>(day.year),
                static_cast<int>(day.month), static_cast<int>(day.day), static_cast<int>(clock.hours()),
                static_cast<int>(clock.minutes()), static_cast<int>(clock.seconds()),
                static_cast<long>(clock.total_microseconds() % 1'000'000));
  return text.data();
}

}  // namespace fstore
