#pragma once

#include <fstore/Output.h>

#include <foundation/storage/provider/ErrorCode.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace fstore {

/// What went wrong in one run of the command: a line each on standard error,
///
///     fstore OPERATION: LOCATION: CODE: REASON
///
/// how often something did, and how the command is to end. It is also who writes to standard error. Any number of
/// threads may use it.
class Report {
 public:
  explicit Report(std::string operation) : operation_(std::move(operation)) {}

  std::size_t failures() const { return failures_; }

  /// 0 done, 1 something failed; where a signal ended the work, that one's number and 128.
  int exitCode() const;
  void endedBy(int signal) { signal_ = signal; }

  /// Keeps `line` as the last one on the terminal, in place of the one before; an empty one clears it. To be called
  /// where standard error is a terminal.
  void showStatus(const std::string& line);

  /// Does `work`, and reports what it throws, so that the command can go on with the next item.
  /// `OutputFailure` passes through.
  /// @param where  the item being worked on, named where the failure names none: a location, or an
  ///               argument as it was typed
  /// @return whether all went well
  template <class Where, class Work>
  bool attempt(const Where& where, const Work& work) {
    try {
      work();
      return true;
    } catch (const OutputFailure&) {
      throw;
    } catch (...) {
      current(where);
      return false;
    }
  }

  void failure(std::u16string_view where, foundation::storage::provider::ErrorCode code, std::u16string_view reason);

 private:
  /// Reports the exception being handled.
  void current(const foundation::storage::provider::StorageIRI& where) { current(where.toString()); }
  void current(const std::string& argument);
  void current(const std::u16string& where);

  std::string operation_;
  std::mutex mutex_;  ///< guards standard error and what follows
  bool hasStatus_ = false;
  std::atomic<std::size_t> failures_{0};
  std::atomic<int> signal_{0};
};

}  // namespace fstore
