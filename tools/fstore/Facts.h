#pragma once

#include <foundation/storage/provider/FolderEntry.h>
#include <foundation/storage/provider/StorageItem.h>

#include <boost/date_time/posix_time/ptime.hpp>
#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>

/// What is known about an entry, whichever kind it is. The store may be asked only now, when the entry may be gone:
/// what cannot be found out is none.
namespace fstore {

std::optional<bool> isLink(const foundation::storage::provider::FolderEntry& entry);
std::optional<bool> isWritable(const foundation::storage::provider::FolderEntry& entry);
/// Where the store does not say, by the name.
bool isHidden(const foundation::storage::provider::FolderEntry& entry);
/// In bytes; none for folders.
std::optional<std::uint64_t> sizeOf(const foundation::storage::provider::FolderEntry& entry);
/// UTC; `not_a_date_time` where it is not known.
boost::posix_time::ptime lastModified(const foundation::storage::provider::FolderEntry& entry);

/// The entry that `item` would be in a listing of its folder, under the name `name`. Throws the store's reason where
/// nothing is there.
foundation::storage::provider::FolderEntry entryOf(const foundation::storage::provider::StorageItem& item,
                                                   std::u16string name);

/// All of it; what is not known is null, and so is a name that is no text.
nlohmann::ordered_json toJson(const foundation::storage::provider::StorageItem& item,
                              const foundation::storage::provider::FolderEntry& entry);

}  // namespace fstore
