#pragma once

#include <fstore/Report.h>
#include <fstore/Stores.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace fstore {

/// A line at the bottom of the terminal, while copying takes longer than a second: how much is copied, of how much, how
/// fast, and how long it will still take. How much there is in all is counted meanwhile, by a thread of its own; links
/// to folders are left out of that. Nothing is shown where standard error is no terminal.
///
/// Any number of threads may use it.
class Progress {
 public:
  enum class Visibility { Hidden, OnTerminal };

  /// @param sources  as they were typed; must outlive the object, as must the others
  Progress(Report& report, const Stores& stores, const std::vector<std::string>& sources, Visibility visibility);
  /// Clears the line.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  bool isShown() const { return isShown_; }

  /// So much more is done.
  void add(std::uint64_t bytes);
  /// Clears the line until the next `add`, so that something else can be written to the terminal.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  void count();
  void countFolder(const foundation::storage::provider::StorageItem& folder,
                   std::vector<foundation::storage::provider::StorageItem>& folders);
  std::string line(Clock::duration elapsed) const;

  Report& report_;
  const Stores& stores_;
  const std::vector<std::string>& sources_;
  const bool isShown_;
  const Clock::time_point begin_ = Clock::now();
  std::atomic<std::uint64_t> done_{0};
  std::atomic<std::uint64_t> whole_{0};
  std::atomic<bool> isCounted_{false};
  std::atomic<bool> isEnding_{false};
  std::mutex mutex_;  ///< guards what follows
  Clock::time_point nextUpdate_;
  std::thread counting_;
};

}  // namespace fstore
