#pragma once

#include <fstore/Report.h>

#include <foundation/storage/provider/StorageItem.h>

#include <vector>

namespace fstore {

/// The stores that one run of the command has used last. A store that gathers changes, as an archive does, is written
/// when it is told to be, and gathers for as long as somebody uses it: kept here, it is read once and written once,
/// however many files the command works on. For one thread to use.
class StoresInUse {
 public:
  /// @param report  is told what fails; must outlive the object
  explicit StoresInUse(Report& report) : report_(report) {}
  StoresInUse(const StoresInUse&) = delete;
  StoresInUse& operator=(const StoresInUse&) = delete;

  /// Keeps the store of `item`. Where that is one too many, the one that was used longest ago writes what it has
  /// gathered, and is let go of.
  void use(const foundation::storage::provider::StorageItem& item);

  /// Has each store write what it has gathered, and lets go of all.
  /// @return whether all went well
  bool handOver();

 private:
  using Roots = std::vector<foundation::storage::provider::StorageItem>;

  bool handOver(const foundation::storage::provider::StorageItem& root) const;

  Report& report_;
  Roots roots_;  ///< one of each store, the one that was used last at the end
};

}  // namespace fstore
