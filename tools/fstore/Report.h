#pragma once

#include <fstore/Output.h>

#include <foundation/storage/provider/ErrorCode.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <string>
#include <string_view>
#include <utility>

namespace fstore {

/// What went wrong in one run of the command: a line each on standard error,
///
///     fstore OPERATION: LOCATION: CODE: REASON
///
/// and whether anything did.
class Report {
 public:
  explicit Report(std::string operation) : operation_(std::move(operation)) {}

  bool hasFailures() const { return hasFailures_; }

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
  bool hasFailures_ = false;
};

}  // namespace fstore
