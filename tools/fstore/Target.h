#pragma once

#include "Report.h"

#include <foundation/storage/provider/StorageItem.h>

#include <functional>
#include <string>
#include <vector>

namespace fstore {

/// Handles the arguments of commands that take something from one place to another: "SOURCE... TARGET".
/// Where the target is a folder, each source goes into it under its own name; otherwise there may be one
/// source only, and the target is what it will be called. `transfer` is run for each source, and its
/// failures are reported.
void transferEach(const std::vector<std::string>& arguments, Report& report,
                  const std::function<void(const foundation::storage::provider::StorageItem& source,
                                           const foundation::storage::provider::StorageItem& target)>& transfer);

}  // namespace fstore
