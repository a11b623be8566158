#pragma once

#include <fstore/Progress.h>

#include <foundation/storage/provider/StorageItem.h>

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

namespace fstore {

/// Tells the progress how far a store has come with a copy that it makes in one operation, by the size of what is
/// there. What the store does not show yet is told once the copy is over.
class GrowthWatch {
 public:
  /// @param size  of the source, in bytes; both others must outlive the object
  GrowthWatch(Progress& progress, const foundation::storage::provider::StorageItem& place, std::uint64_t size);
  ~GrowthWatch();
  GrowthWatch(const GrowthWatch&) = delete;
  GrowthWatch& operator=(const GrowthWatch&) = delete;

  /// Ends the watch.
  /// @return how much the progress has been told
  std::uint64_t end();

 private:
  void run();
  std::optional<std::uint64_t> sizeNow() const noexcept;

  Progress& progress_;
  const foundation::storage::provider::StorageItem& place_;
  const std::uint64_t size_;
  const std::optional<std::uint64_t> sizeBefore_;  ///< of what is there until the copy begins
  std::uint64_t told_ = 0;                         ///< the thread's, until it has ended
  std::mutex mutex_;                               ///< guards the next one
  bool isEnding_ = false;
  std::condition_variable isOver_;
  std::thread thread_;
};

}  // namespace fstore
