#include <foundation/storage/backend/archive/detail/zip/Times.h>

#include <foundation/storage/backend/archive/detail/zip/ExtraFields.h>
#include <foundation/storage/backend/archive/detail/zip/Records.h>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <algorithm>
#include <ctime>
#include <limits>
#include <optional>

namespace foundation::storage::backend::archive::detail::zip {

using boost::posix_time::microseconds;
using boost::posix_time::ptime;
using boost::posix_time::seconds;

namespace {

const ptime unixEpoch(boost::gregorian::date(1970, 1, 1));

constexpr std::uint64_t ticksPerMicrosecond = 10;
/// From 1601, where NTFS begins, to 1970.
constexpr std::int64_t ntfsEpochInSeconds = 11'644'473'600;
/// The end of the year 9999, the last that Boost knows, in seconds since 1970.
constexpr std::int64_t lastSecond = 253'402'300'799;

/// The flag of the field 0x5455 that says that it holds the last-modified time.
constexpr char holdsLastModified = 1;

std::optional<ptime> ntfsTime(std::string_view extra) {
  const auto field = ExtraFields(extra).find(extraNtfsTimes);
  // Four reserved bytes, then attributes, of which the one with the times is the tag 1 with 24 bytes.
  if (!field || field->size() < 16 || readNumber<std::uint16_t>(*field, 4) != 1)
    return std::nullopt;
  const auto sinceEpoch = readNumber<std::uint64_t>(*field, 8) / ticksPerMicrosecond;
  const auto wholeSeconds = static_cast<std::int64_t>(sinceEpoch / 1'000'000) - ntfsEpochInSeconds;
  if (wholeSeconds > lastSecond)
    return std::nullopt;
  return unixEpoch + seconds(wholeSeconds) + microseconds(static_cast<std::int64_t>(sinceEpoch % 1'000'000));
}

std::optional<ptime> unixTime(std::string_view extra) {
  const auto field = ExtraFields(extra).find(extraUnixTimes);
  if (!field || field->size() < 5 || ((*field)[0] & holdsLastModified) == 0)
    return std::nullopt;
  return unixEpoch + seconds(readNumber<std::int32_t>(*field, 1));
}

/// The bits of MS-DOS's time that are its seconds, halved.
constexpr std::uint32_t secondsMask = 0x1F;

/// Without its seconds.
ptime localMinute(std::uint32_t dosTime) {
  std::tm parts{};
  parts.tm_min = static_cast<int>(dosTime >> 5 & 0x3F);
  parts.tm_hour = static_cast<int>(dosTime >> 11 & 0x1F);
  parts.tm_mday = static_cast<int>(dosTime >> 16 & 0x1F);
  parts.tm_mon = static_cast<int>(dosTime >> 21 & 0x0F) - 1;
  parts.tm_year = static_cast<int>(dosTime >> 25) + 80;
  parts.tm_isdst = -1;
  if (parts.tm_mday == 0 || parts.tm_mon < 0)
    return {};
  const auto time = std::mktime(&parts);
  return time == static_cast<std::time_t>(-1) ? ptime() : unixEpoch + seconds(static_cast<std::int64_t>(time));
}

/// Rounded down, unlike Boost's conversion of what lies before 1970.
std::int64_t secondsSince1970(const ptime& time) {
  const auto whole = (time - unixEpoch).total_microseconds();
  return whole / 1'000'000 - (whole % 1'000'000 < 0 ? 1 : 0);
}

bool fitsUnixTime(std::int64_t time) {
  return time >= std::numeric_limits<std::int32_t>::min() && time <= std::numeric_limits<std::int32_t>::max();
}

}  // namespace

ptime TimeReader::localTime(std::uint32_t dosTime) {
  const auto minute = dosTime & ~secondsMask;
  auto& known = minutes_[(minute >> 5) % minutes_.size()];
  if (known.dosTime != minute || minute == 0)
    known = {minute, localMinute(minute)};
  return known.time + seconds((dosTime & secondsMask) * 2);
}

ptime TimeReader::read(std::uint32_t dosTime, std::string_view extra) {
  if (const auto time = ntfsTime(extra))
    return *time;
  if (const auto time = unixTime(extra))
    return *time;
  return localTime(dosTime);
}

std::uint32_t dosTime(const ptime& time) {
  constexpr std::uint32_t first = 1U << 21 | 1U << 16;
  constexpr std::uint32_t last = 127U << 25 | 12U << 21 | 31U << 16 | 23U << 11 | 59U << 5 | 29U;
  const std::time_t sinceEpoch = secondsSince1970(time);
  std::tm parts{};
  if (localtime_r(&sinceEpoch, &parts) == nullptr || parts.tm_year < 80)
    return first;
  if (parts.tm_year > 207)
    return last;
  const auto field = [](int value, unsigned shift) { return static_cast<std::uint32_t>(value) << shift; };
  return field(parts.tm_year - 80, 25) | field(parts.tm_mon + 1, 21) | field(parts.tm_mday, 16) |
         field(parts.tm_hour, 11) | field(parts.tm_min, 5) | field(std::min(parts.tm_sec, 59) / 2, 0);
}

std::string timeFields(const ptime& time) {
  const auto whole = secondsSince1970(time);
  std::string fields;
  if (fitsUnixTime(whole)) {
    std::string data(1, holdsLastModified);
    appendNumber(data, static_cast<std::int32_t>(whole));
    fields += extraField(extraUnixTimes, data);
  }
  const auto fraction = (time - unixEpoch).total_microseconds() - whole * 1'000'000;
  // Before 1970 there are programs (7-Zip) that take the seconds for unsigned.
  const bool isTold = fitsUnixTime(whole) && whole >= 0 && fraction == 0;
  if (isTold || whole < -ntfsEpochInSeconds)
    return fields;
  const auto ticks =
      (static_cast<std::uint64_t>(whole + ntfsEpochInSeconds) * 1'000'000 + static_cast<std::uint64_t>(fraction)) *
      ticksPerMicrosecond;
  std::string data(4, '\0');
  appendNumber(data, std::uint16_t{1});
  appendNumber(data, std::uint16_t{24});
  for (int each = 0; each < 3; ++each)  // last modified, accessed, created
    appendNumber(data, ticks);
  return fields + extraField(extraNtfsTimes, data);
}

}  // namespace foundation::storage::backend::archive::detail::zip
