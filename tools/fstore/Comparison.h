#pragma once

#include <foundation/storage/provider/StorageItem.h>

#include <functional>

namespace fstore {

/// Reads both files. Throws `Exception` with `IOError` and the location of `copy` where they differ, and with the
/// reason where one cannot be read.
/// @param isToStop  asked between blocks; true ends the comparison by such an exception
void requireSameContent(const foundation::storage::provider::StorageItem& source,
                        const foundation::storage::provider::StorageItem& copy, const std::function<bool()>& isToStop);

}  // namespace fstore
