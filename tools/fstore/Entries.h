#pragma once

#include <foundation/storage/provider/StorageItem.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace fstore {

/// What walking a tree needs to know of an entry.
struct Entry {
  std::u16string name;
  bool isFolder;  ///< or a link to one
  bool isLink;
  std::optional<std::uint64_t> size;  ///< in bytes, of files where it is known
};

/// Appends all entries of `folder` to `entries`. They are collected before anything is done with them, so
/// that a deep walk holds no listing open at each level, and so that removing or adding entries does not
/// disturb the listing. Where listing fails halfway, what was found stays.
void collectEntries(const foundation::storage::provider::StorageItem& folder, std::vector<Entry>& entries);

}  // namespace fstore
