#pragma once

#include <cstdint>

namespace foundation::storage::events {

/// What happened in a watched folder.
enum class Kind : std::int32_t {
  WatchedFolderModified = 0,  ///< the folder's own last-modified time changed
  WatchedFolderRemoved = 1,   ///< the folder is gone
  EntryAdded = 2,
  EntryModified = 3,  ///< an entry's last-modified time changed
  EntryRemoved = 4,
};

}  // namespace foundation::storage::events
