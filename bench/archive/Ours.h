#pragma once

#include "disk/Peer.h"

#include <foundation/storage/backend/archive/ArchiveFormat.h>
#include <foundation/storage/provider/StorageItem.h>

#include <string>

namespace bench {

using foundation::storage::backend::archive::ArchiveFormat;
using foundation::storage::provider::StorageItem;

/// An archive by our library, not read yet: its root, of a provider that nobody else has.
/// @param path  of a file
StorageItem ourArchive(const std::string& path, ArchiveFormat format);
/// One that lies in another archive.
StorageItem ourArchive(const StorageItem& container, ArchiveFormat format);

/// `entries`, `nameLength` and `bytes` of all there is.
Tally tallyOf(const StorageItem& archive);
/// The content of an entry.
std::string ourContent(const StorageItem& archive, const std::string& name);
/// The contents of all there is in the root, one after the other, in the order of the listing.
std::string ourContents(const StorageItem& archive);
/// Replaces an entry and writes the archive.
void ourReplace(const StorageItem& archive, const std::string& name, const std::string& content);

}  // namespace bench
