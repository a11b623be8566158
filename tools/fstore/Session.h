#pragma once

#include <fstore/Output.h>
#include <fstore/Report.h>
#include <fstore/Stores.h>
#include <fstore/StoresInUse.h>

#include <foundation/storage/provider/StorageItem.h>

#include <optional>
#include <string>
#include <vector>

namespace fstore {

/// What one run of the command works with.
struct Session {
  Report& report;
  Output& output;
  const Stores& stores;
  StoresInUse& inUse;

  /// The item that an argument names, whose store stays in use; none, once that is reported, where it names none.
  std::optional<foundation::storage::provider::StorageItem> open(const std::string& argument) const {
    std::optional<foundation::storage::provider::StorageItem> item;
    report.attempt(argument, [&] { item.emplace(stores.open(argument)); });
    if (item)
      inUse.use(*item);
    return item;
  }

  /// Does `work(item, argument)` for the item that each argument names. What fails is reported, and does
  /// not keep the next one from being done.
  template <class Work>
  void forEach(const std::vector<std::string>& arguments, const Work& work) const {
    for (const auto& argument : arguments)
      if (const auto item = open(argument))
        report.attempt(item->getLocation(), [&] { work(*item, argument); });
  }
};

}  // namespace fstore
