#include <fstore/Entries.h>

namespace fstore {

namespace provider = foundation::storage::provider;

namespace {

/// An entry that could not be looked at counts as no link: opening it will say why.
bool isLink(const provider::FolderEntry& entry) {
  if (const auto& file = entry.getFileAttributes())
    return file->isSymlink();
  const auto& folder = entry.getFolderAttributes();
  return folder && folder->isSymlink();
}

}  // namespace

void collectEntries(const provider::StorageItem& folder, std::vector<Entry>& entries) {
  for (const auto listing = folder.listAll(u""); listing->hasNext();) {
    listing->next();
    const auto entry = listing->current();
    entries.push_back({entry.getName(), !entry.isFile(), isLink(entry)});
  }
}

}  // namespace fstore
