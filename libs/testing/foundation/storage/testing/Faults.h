#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/ErrorCode.h>
#include <foundation/storage/testing/Operation.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace foundation::storage::testing {

/// Whether a call fails before it does anything, or after it has done all: the reply was lost.
enum class FaultMoment : std::int32_t { Before, After };

/// What is to go wrong in a `FaultyProvider`, and what has been called.
///
///     faults->fail(Operation::Write, 3, ErrorCode::NoSpaceLeft);   // the third write to any stream
///     faults->shorten(Operation::Read, Faults::every, 1);          // every read gives one byte
///     faults->delay(Operation::MoveFile, 1, [&] { gate.wait(); }); // the first move waits for the test
///
/// Calls are counted from 1, for each operation and over all, since the plan was made or cleared. Any number
/// of threads may use it.
class FOUNDATION_EXPORT Faults {
 public:
  /// In place of a call's number: all calls.
  static constexpr std::size_t every = 0;

  /// With nothing planned.
  Faults();
  ~Faults();
  Faults(const Faults&) = delete;
  Faults& operator=(const Faults&) = delete;

  /// Makes a call fail: with `Exception` and the location, or with the stream's failure.
  /// @param call  the number of that call, or `every`
  void fail(Operation operation, std::size_t call, provider::ErrorCode code, FaultMoment moment = FaultMoment::Before);
  /// The same, counted over all operations.
  void failAny(std::size_t call, provider::ErrorCode code, FaultMoment moment = FaultMoment::Before);
  /// Lets a read or write move at most that many bytes.
  /// @param operation  `Read` or `Write`
  /// @param bytes      at least 1
  void shorten(Operation operation, std::size_t call, std::int64_t bytes);
  /// Calls `wait` before a call goes on; without a lock, so that other calls pass meanwhile. What it throws,
  /// the call throws.
  void delay(Operation operation, std::size_t call, std::function<void()> wait);

  /// Forgets the plan, what was called and what has failed. Not streams that are still open.
  void clear();

  /// How many calls there were, of all operations or of one.
  /// @{
  std::size_t countCalls() const;
  std::size_t countCalls(Operation operation) const;
  /// @}
  /// How many calls were made to fail, those included that a delay ended before.
  std::size_t countFailures() const;
  /// Streams and transactions that exist; 0 where nothing has leaked.
  std::size_t countOpenStreams() const;
  /// All calls in order, such as "MoveFile memory:///a"; they are kept until `clear()`.
  std::vector<std::string> calls() const;

  // --- For decorators ---

  /// What is to happen to one call.
  struct Verdict {
    std::optional<provider::ErrorCode> failure;  ///< with this code, if at all
    FaultMoment moment = FaultMoment::Before;    ///< of that failure
    std::optional<std::int64_t> mostBytes;       ///< that a read or write may move; none: as many as asked for
  };

  /// Notes a call and waits where it is to be delayed.
  /// @param subject  what the call is about, for `calls()`
  Verdict enter(Operation operation, const std::string& subject);

  /// Counts a stream from its opening until it is destroyed.
  class FOUNDATION_EXPORT OpenStream {
   public:
    /// @param faults  outlives this object
    explicit OpenStream(Faults& faults);
    ~OpenStream();
    OpenStream(const OpenStream&) = delete;
    OpenStream& operator=(const OpenStream&) = delete;

   private:
    Faults& faults_;
  };

 private:
  struct Fault {
    std::optional<Operation> operation;  ///< none: any
    std::size_t call;
    std::optional<provider::ErrorCode> failure;
    FaultMoment moment = FaultMoment::Before;
    std::optional<std::int64_t> mostBytes;
    std::function<void()> wait;
  };

  void plan(Fault fault);
  bool concerns(const Fault& fault, Operation operation) const;

  mutable std::mutex mutex_;  ///< guards all that follows
  std::vector<Fault> faults_;
  std::vector<std::string> calls_;
  std::map<Operation, std::size_t> counts_;
  std::size_t failures_ = 0;
  std::size_t openStreams_ = 0;
};

}  // namespace foundation::storage::testing
