#pragma once

#include <foundation/core/Export.h>

namespace foundation::storage::provider {

class StorageItem;

/// Tells the item's provider that what it remembers of the item's location may be stale. Does nothing
/// where the provider is no `extensions::IInvalidatable`. The caches of factories are not touched. Throws what the back
/// end throws. Any number of threads may call it.
FOUNDATION_EXPORT void invalidateProvider(const StorageItem& item);

}  // namespace foundation::storage::provider
