#pragma once

#include <foundation/core/Export.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

/// The diagnostic log: records for whoever looks into a running program, never for its user.
///
/// Records belong to a channel and have a level. Every channel is closed until the program opens it,
/// and a record on a closed channel costs one relaxed load. What passes goes to Boost.Log's core with
/// the attributes "Channel" (`std::string`) and "Severity" (`std::uint32_t`, the level) and the record
/// as the message; sinks are the program's to set up.
namespace foundation::log {

/// The higher, the graver.
enum class Level : std::uint32_t {
  detail = 0x10,  ///< what explains another record
  error = 0x200,  ///< something failed and the library went on
};

/// Lets the records of `channel` through that are at least as grave as `least`, from now on and for all
/// its loggers. Any thread may call it.
FOUNDATION_EXPORT void openChannel(std::string_view channel, Level least);

/// Lets none through any more. Any thread may call it.
FOUNDATION_EXPORT void closeChannel(std::string_view channel);

/// Writes records on one channel. Any number of threads may use one logger.
/// @tparam Char  the character type of records
template <class Char>
class FOUNDATION_EXPORT basic_diagnostic_logger {
 public:
  /// How records are passed.
  using view_type = std::basic_string_view<Char>;

  /// For the channel of that name, whether it is open, closed or not yet heard of.
  /// @param channel  in UTF-8
  explicit basic_diagnostic_logger(std::string channel);

  /// Whether a record of `level` would be written; ask before putting a costly text together.
  bool passes(Level level) const noexcept {
    return static_cast<std::uint32_t>(level) >= threshold_->load(std::memory_order_relaxed);
  }

  /// Writes a record if its level passes. Records are written where a failure is being dealt with, so a
  /// failure to write is none of the caller's: a `std::exception` (a sink's, or for want of memory) drops
  /// the record, here and for the sinks that had not yet had it. A program that wants to know sets an
  /// exception handler on Boost.Log's core or sinks; that is called first. Only what is no
  /// `std::exception` passes, the interruption of a thread above all.
  void write(Level level, view_type record) const;

 private:
  std::string channel_;
  std::shared_ptr<const std::atomic<std::uint32_t>> threshold_;
};

extern template class basic_diagnostic_logger<char>;

/// Takes records in UTF-8.
using diagnostic_logger = basic_diagnostic_logger<char>;

}  // namespace foundation::log
