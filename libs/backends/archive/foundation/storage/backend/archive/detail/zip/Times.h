#pragma once

#include <boost/date_time/posix_time/ptime.hpp>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

/// Last-modified times in a zip. Each entry has one of MS-DOS's, in even seconds of local time from 1980 to 2107
/// (APPNOTE.TXT 4.4.6); more exact ones are in extra fields, in UTC: seconds since 1970 (Info-ZIP's field 0x5455) and
/// tenths of microseconds since 1601 (the field of NTFS, APPNOTE.TXT 4.5.5).
namespace foundation::storage::backend::archive::detail::zip {

/// Reads the times of one archive after the other: the system is slow at telling what a local time is in UTC, and many
/// entries are of the same minute.
class TimeReader {
 public:
  /// @param dosTime  the date in the upper half, the time in the lower one
  /// @param extra    the entry's extra fields in the directory
  /// @return UTC, from the most exact that there is; `not_a_date_time` for none that makes sense
  boost::posix_time::ptime read(std::uint32_t dosTime, std::string_view extra);

 private:
  struct Minute {
    std::uint32_t dosTime = 0;  ///< without its seconds; 0 is no time
    boost::posix_time::ptime time;
  };

  boost::posix_time::ptime localTime(std::uint32_t dosTime);

  std::array<Minute, 256> minutes_;
};

/// The nearest that MS-DOS has, not later than `time`.
std::uint32_t dosTime(const boost::posix_time::ptime& time);

/// Extra fields that hold `time` to the microsecond.
std::string timeFields(const boost::posix_time::ptime& time);

}  // namespace foundation::storage::backend::archive::detail::zip
