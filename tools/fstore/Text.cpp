#include <fstore/Text.h>

#include <fl/i18n/Convert.h>

#include <boost/date_time/gregorian/greg_date.hpp>
#include <boost/date_time/posix_time/posix_time_duration.hpp>

#include <algorithm>
#include <array>
#include <cstdio>

namespace fstore {
namespace {

bool isControl(char16_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

void appendEscaped(std::string& out, char16_t control) {
  constexpr std::string_view digits = "0123456789abcdef";
  switch (control) {
    case u'\n':
      out += "\\n";
      break;
    case u'\r':
      out += "\\r";
      break;
    case u'\t':
      out += "\\t";
      break;
    default:
      out.append("\\x").append({digits[control >> 4], digits[control & 15]});
  }
}

}  // namespace

std::string printable(std::u16string_view text) {
  std::string out;
  while (!text.empty()) {
    const auto control = std::find_if(text.begin(), text.end(), isControl);
    const auto plain = static_cast<std::size_t>(control - text.begin());
    fl::i18n::append_string(out, text.substr(0, plain));
    if (control == text.end())
      break;
    appendEscaped(out, *control);
    text.remove_prefix(plain + 1);
  }
  return out;
}

std::string shown(std::u16string_view name, const Output& output) {
  return output.isTerminal() ? printable(name) : fl::i18n::to_string(name);
}

std::string timeText(const boost::posix_time::ptime& time) {
  if (time.is_special())
    return "?";
  const auto day = time.date().year_month_day();
  const auto clock = time.time_of_day();
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", static_cast<int>(day.year),
                static_cast<int>(day.month), static_cast<int>(day.day), static_cast<int>(clock.hours()),
                static_cast<int>(clock.minutes()), static_cast<int>(clock.seconds()));
  return text.data();
}

}  // namespace fstore
