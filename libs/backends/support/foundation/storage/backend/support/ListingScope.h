#pragma once

#include <foundation/storage/provider/FolderEntry.h>

#include <optional>

namespace foundation::storage::backend::support {

/// What a listing is to give.
struct ListingScope {
  std::optional<provider::FolderEntry::EntryType> only = std::nullopt;  ///< all, unless told
  bool isRecursive = false;                                             ///< the whole subtree
  bool givesAttributes = true;                                          ///< else names and types

  /// Whether an entry of that type belongs there.
  bool includes(provider::FolderEntry::EntryType type) const { return !only || only == type; }
};

}  // namespace foundation::storage::backend::support
