#pragma once

#include <boost/date_time/posix_time/ptime.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace fstore {

/// The moment that `text` names in the form of ISO 8601, always in UTC: `2001-02-03T04:05:06.123456Z`. The fraction
/// and the Z may be missing, a blank may stand for the T, and the date may stand alone for its first moment, so that
/// what this program prints can be given back to it. None where it is anything else.
std::optional<boost::posix_time::ptime> parseTime(std::string_view text);

/// `YYYY-MM-DDTHH:MM:SS.ffffffZ`; none where the time is not known.
std::optional<std::string> isoText(const boost::posix_time::ptime& time);

}  // namespace fstore
