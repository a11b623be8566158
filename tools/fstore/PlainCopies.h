#pragma once

#include <fstore/Report.h>
#include <fstore/StopSignal.h>

#include <foundation/storage/provider/StorageIRI.h>

#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace fstore {

/// Copies that nothing can end before they are done, since the store makes them in one operation. Where a signal asks
/// to stop, those under way are waited for a moment, as most are over soon; if they are not, their destinations are
/// reported as incomplete, and the program ends.
class PlainCopies {
 public:
  /// Throws `std::system_error` where there is no thread to be had.
  /// @param lastWords  called, by another thread, before the program ends
  PlainCopies(const StopSignal& stop, Report& report, std::function<void()> lastWords);
  ~PlainCopies();
  PlainCopies(const PlainCopies&) = delete;
  PlainCopies& operator=(const PlainCopies&) = delete;

  /// Does `work`, which writes to `destination`. Any number of threads may call it.
  template <class Work>
  void run(const foundation::storage::provider::StorageIRI& destination, const Work& work) {
    const Entry entry(*this, destination);
    work();
  }

 private:
  using Destinations = std::list<foundation::storage::provider::StorageIRI>;

  class Entry {
   public:
    Entry(PlainCopies& copies, const foundation::storage::provider::StorageIRI& destination);
    ~Entry();
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

   private:
    PlainCopies& copies_;
    Destinations::iterator place_;
  };

  void waitForSignal();
  void endProgram();

  const StopSignal& stop_;
  Report& report_;
  const std::function<void()> lastWords_;
  std::mutex mutex_;  ///< guards what follows; before the report's
  std::condition_variable isOver_;
  Destinations underWay_;
  bool isEnding_ = false;
  std::thread waiting_;
};

}  // namespace fstore
