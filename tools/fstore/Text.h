#pragma once

#include <fstore/Output.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <string>
#include <string_view>

/// How values are written out.
namespace fstore {

/// `text` in UTF-8 on one line that moves no cursor: control characters are spelt out, as `\n` or `\x1b`.
std::string printable(std::u16string_view text);

/// A name as it is; on a terminal `printable`, since it may hold commands for one.
std::string shown(std::u16string_view name, const Output& output);

/// `YYYY-MM-DD HH:MM:SS`, or `?` where the time is not known.
std::string timeText(const boost::posix_time::ptime& time);

}  // namespace fstore
