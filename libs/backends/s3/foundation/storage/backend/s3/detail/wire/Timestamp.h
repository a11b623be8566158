#pragma once

#include <boost/date_time/posix_time/ptime.hpp>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::wire {

/// "20130524T000000Z", as signatures have it; of the day alone "20130524".
/// @{
std::string basicTime(std::chrono::system_clock::time_point time);
std::string basicDay(std::chrono::system_clock::time_point time);
/// @}

/// Reads "2009-10-12T17:50:30.000Z", as documents have it (ISO 8601); `not_a_date_time` for what is none.
boost::posix_time::ptime parseIsoTime(std::string_view text);

/// Reads "Wed, 12 Oct 2009 17:50:00 GMT", as headers have it (RFC 9110, 5.6.7, also the obsolete forms);
/// `not_a_date_time` for what is none.
boost::posix_time::ptime parseHttpTime(std::string_view text);

}  // namespace foundation::storage::backend::s3::detail::wire
