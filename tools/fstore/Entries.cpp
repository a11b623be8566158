#include <fstore/Entries.h>
#include <fstore/Facts.h>

namespace fstore {

namespace provider = foundation::storage::provider;

void collectEntries(const provider::StorageItem& folder, std::vector<Entry>& entries) {
  for (const auto listing = folder.listAll(u""); listing->hasNext();) {
    listing->next();
    const auto entry = listing->current();
    // One that could not be looked at counts as no link: opening it will say why.
    entries.push_back({entry.getName(), !entry.isFile(), isLink(entry).value_or(false), sizeOf(entry)});
  }
}

}  // namespace fstore
