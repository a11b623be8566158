#pragma once

#include <cstdint>

/// What change events tell.
namespace foundation::storage::events {

/// What happened in a watched folder.
enum class Kind : std::int32_t {
  WatchedFolderModified = 0,  ///< the folder's own last-modified time changed
  WatchedFolderRemoved = 1,   ///< the folder is gone
  EntryAdded = 2,             ///< also one that was moved there
  EntryModified = 3,          ///< an entry's last-modified time changed
  EntryRemoved = 4,           ///< also one that was moved away
};

}  // namespace foundation::storage::events
