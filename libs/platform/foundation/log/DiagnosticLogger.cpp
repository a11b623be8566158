#include <foundation/log/DiagnosticLogger.h>

#include <boost/log/attributes/constant.hpp>
#include <boost/log/core/core.hpp>
#include <boost/log/sources/logger.hpp>
#include <boost/log/sources/record_ostream.hpp>

#include <exception>
#include <limits>
#include <map>
#include <mutex>
#include <utility>

namespace foundation::log {
namespace {

using Threshold = std::atomic<std::uint32_t>;

constexpr std::uint32_t closed = std::numeric_limits<std::uint32_t>::max();

/// The least level of every channel that was ever named.
class Channels {
 public:
  static Channels& all() {
    // Never destroyed: what is let go of after main() may still have something to say.
    static auto& channels = *new Channels;
    return channels;
  }

  std::shared_ptr<Threshold> thresholdOf(std::string_view channel) {
    const std::scoped_lock lock(mutex_);
    auto& threshold = thresholds_[std::string(channel)];
    if (threshold == nullptr)
      threshold = std::make_shared<Threshold>(closed);
    return threshold;
  }

 private:
  std::mutex mutex_;
  std::map<std::string, std::shared_ptr<Threshold>> thresholds_;
};

template <class Char>
void push(const std::string& channel, Level level, std::basic_string_view<Char> record) {
  namespace logging = boost::log;
  logging::sources::logger source;
  source.add_attribute("Channel", logging::attributes::constant<std::string>(channel));
  source.add_attribute("Severity", logging::attributes::constant<std::uint32_t>(static_cast<std::uint32_t>(level)));
  if (auto opened = source.open_record()) {
    logging::record_ostream out(opened);
    out << record;
    out.flush();
    source.push_record(std::move(opened));
  }
}

}  // namespace

void openChannel(std::string_view channel, Level least) {
  Channels::all().thresholdOf(channel)->store(static_cast<std::uint32_t>(least), std::memory_order_relaxed);
}

void closeChannel(std::string_view channel) {
  Channels::all().thresholdOf(channel)->store(closed, std::memory_order_relaxed);
}

template <class Char>
basic_diagnostic_logger<Char>::basic_diagnostic_logger(std::string channel)
    : channel_(std::move(channel)), threshold_(Channels::all().thresholdOf(channel_)) {}

template <class Char>
void basic_diagnostic_logger<Char>::write(Level level, view_type record) const {
  if (!passes(level))
    return;
  try {
    push(channel_, level, record);
  } catch (const std::exception&) {  // the record is lost: nobody here could deal with it
  }
}

template class basic_diagnostic_logger<char>;

}  // namespace foundation::log
