#pragma once

#include <foundation/storage/provider/ErrorCode.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <functional>
#include <string>

namespace fstore {

/// What went wrong in one operation of the command. Each failure is one line on standard error:
///
///     fstore cat: file:///nope: ResourceNotFound: No such file or directory
class Report {
 public:
  /// @param operation  as the user typed it, "cat" for instance
  explicit Report(std::string operation) : operation_(std::move(operation)) {}

  /// Runs `action`. A failure is reported, at the location that it names or else at `subject`.
  /// @param subject  the text of a location, or an argument that is none
  /// @return whether the action succeeded
  bool attempt(const std::string& subject, const std::function<void()>& action);
  bool attempt(const foundation::storage::provider::StorageIRI& subject, const std::function<void()>& action);

  void fail(const std::string& subject, foundation::storage::provider::ErrorCode code, const std::string& reason);
  void fail(const foundation::storage::provider::StorageIRI& subject, foundation::storage::provider::ErrorCode code,
            const std::string& reason);

  /// 0, or 1 where anything failed.
  int exitCode() const { return hasFailed_ ? 1 : 0; }

 private:
  std::string operation_;
  bool hasFailed_ = false;
};

/// `text` with control characters spelt out, so that it stays on one line and cannot steer a terminal.
std::string printable(const std::string& text);

}  // namespace fstore
