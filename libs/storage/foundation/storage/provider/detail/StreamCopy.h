#pragma once

#include <foundation/storage/provider/CopyFileOptions.h>

namespace foundation::storage::provider {
class StorageItem;
}

namespace foundation::storage::provider::detail {

/// Copies one file's content between any two stores, block by block; see `StorageItem::copyFile`.
TransactionStatus copyThroughStreams(const StorageItem& source, const StorageItem& destination,
                                     const CopyFileOptions& options);

}  // namespace foundation::storage::provider::detail
