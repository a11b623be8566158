#include <foundation/storage/backend/s3/detail/client/ClockOffset.h>

#include <foundation/storage/backend/s3/detail/wire/Timestamp.h>

#include <boost/date_time/posix_time/conversion.hpp>

namespace foundation::storage::backend::s3::detail::client {

using std::chrono::system_clock;

namespace {

/// Stores bear a quarter of an hour or less; what is nearer than this has been refused for something else.
constexpr std::chrono::minutes suspicious{4};

}  // namespace

system_clock::time_point ClockOffset::now() const { return system_clock::now() + offset_.load(); }

bool ClockOffset::learn(const http::HttpAnswer& answer, std::string_view code, system_clock::time_point signedAt) {
  const auto saysSo = code == "RequestTimeTooSkewed";
  const auto* const date = wire::findHeader(answer.headers, "date");
  if (!date || !(saysSo || (answer.status == 403 && code.empty())))
    return false;
  const auto parsed = wire::parseHttpTime(*date);
  if (parsed.is_special())
    return false;
  const auto theirs = system_clock::from_time_t(boost::posix_time::to_time_t(parsed));
  if (!saysSo && std::chrono::abs(theirs - signedAt) < suspicious)
    return false;
  offset_ = std::chrono::round<std::chrono::seconds>(theirs - system_clock::now());
  return true;
}

}  // namespace foundation::storage::backend::s3::detail::client
