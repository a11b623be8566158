#pragma once

#include <foundation/core/Export.h>

namespace foundation::storage::provider {

class StorageItem;

/// Tells the item's provider that what it remembers of the item's location may be stale. Does nothing
/// where the provider is no `extensions::IInvalidatable`. The caches of factories are not touched.
FOUNDATION_EXPORT void invalidateProvider(const StorageItem& item);

}  // namespace foundation::storage::provider
