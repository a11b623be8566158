#pragma once

#include <fstore/CopyOptions.h>
#include <fstore/JobQueue.h>
#include <fstore/PlainCopies.h>
#include <fstore/Progress.h>
#include <fstore/Session.h>
#include <fstore/StopSignal.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>

namespace fstore {

/// Copies files, one after the other or several at once, until a signal asks to stop. Failures are reported. For one
/// thread to use.
class FileCopier {
 public:
  using Item = foundation::storage::provider::StorageItem;
  /// Throws where a file is not to be copied.
  using Check = std::function<void(const Item& source, const Item& place)>;

  /// All arguments must outlive the object.
  FileCopier(const Session& session, const CopyOptions& options, const StopSignal& stop, Progress& progress);

  bool isStopped() const { return stop_.isAsked(); }

  /// Copies `source` to `place`, now or soon. Throws `OutputFailure`, be it an earlier copy's.
  /// @param size  of the source in bytes, if it is known
  void add(const Item& source, const Item& place, const Check& check, const std::optional<std::uint64_t>& size);

  /// Waits for all that was added, where there is more than one thread: what comes next may be written to the same
  /// place. Throws `OutputFailure`.
  void finish() { jobs_.finish(); }
  bool isParallel() const { return jobs_.isParallel(); }

  /// What was copied is lost: the store has not written it.
  void countNothing();

  /// Says how much was copied. Throws `OutputFailure`.
  void printSummary();

 private:
  void copy(const Item& source, const Item& place, std::optional<std::uint64_t> size);
  std::uint64_t copyPlainly(const Item& source, const Item& place, std::uint64_t size);
  std::uint64_t copyWatched(const Item& source, const Item& place, std::uint64_t size);
  void tell(const Item& source, const Item& place);
  void sayLastWords() noexcept;

  const Session& session_;
  const CopyOptions& options_;
  const StopSignal& stop_;
  Progress& progress_;
  PlainCopies plainCopies_;
  std::atomic<std::uint64_t> files_{0};
  std::atomic<std::uint64_t> bytes_{0};
  std::mutex outputMutex_;  ///< guards standard output
  JobQueue jobs_;           ///< its threads use all of the above
};

}  // namespace fstore
