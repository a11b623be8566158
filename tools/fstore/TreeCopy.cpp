#include <fstore/Refusal.h>
#include <fstore/Target.h>
#include <fstore/TreeCopy.h>

#include <algorithm>
#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ErrorCode;
using provider::ExistenceTypeExtended;
using provider::StorageIRI;
using provider::StorageItem;

namespace {

/// A device met by chance, such as /dev/zero, could be read for ever.
void requireOrdinary(const StorageItem& file, bool isLink) {
  const auto meant = isLink ? StorageItem(file, file.getCanonicalLocation()) : file;
  if (meant.existsExtended() == ExistenceTypeExtended::SpecialFile)
    throw refusal(ErrorCode::InvalidLocation, file.getLocation(), u"Neither a regular file nor a folder");
}

}  // namespace

void TreeCopy::run(const StorageItem& source, const StorageItem& destination) {
  const auto canonicalSource = source.getCanonicalLocation();
  if (contains(canonicalSource, writtenLocation(destination)))
    throw refusal(ErrorCode::InvalidLocation, destination.getLocation(), u"A folder cannot be copied into itself");
  enter(source, destination, canonicalSource);
  while (!path_.empty() && !files_.isStopped()) {
    auto& level = path_.back();
    if (level.next == level.entries.size())
      leave();
    else
      copyEntry(Entry(std::move(level.entries[level.next++])));
  }
}

void TreeCopy::enter(const StorageItem& source, const StorageItem& destination, const StorageIRI& canonicalSource) {
  Level level{source, destination, canonicalSource, ensureFolder(destination), {}};
  level.isShared = files_.isParallel() && destination.existsExtended() == ExistenceTypeExtended::SymlinkToFolder;
  if (level.isShared)
    files_.finish();
  report_.attempt(source.getLocation(), [&] { collectEntries(source, level.entries); });
  path_.push_back(std::move(level));
}

void TreeCopy::leave() {
  if (path_.back().isShared)
    files_.finish();
  path_.pop_back();
}

/// @return its canonical location; what was just created is no link, so that the store need not be asked
StorageIRI TreeCopy::ensureFolder(const StorageItem& destination) const {
  const bool wasThere = destination.folderExists();
  if (!wasThere)
    destination.createFolder();
  return wasThere || path_.empty() ? destination.getCanonicalLocation()
                                   : StorageIRI(path_.back().canonicalDestination, destination.getName());
}

void TreeCopy::copyEntry(const Entry& entry) {
  const StorageItem source(path_.back().source, entry.name);
  const StorageItem destination(path_.back().destination, entry.name);
  if (entry.isFolder)
    report_.attempt(source.getLocation(), [&] { copySubfolder(source, destination, entry.isLink); });
  else
    files_.add(
        source, destination,
        [isLink = entry.isLink](const StorageItem& file, const StorageItem&) { requireOrdinary(file, isLink); },
        entry.size);
}

void TreeCopy::copySubfolder(const StorageItem& source, const StorageItem& destination, bool isLink) {
  const auto canonicalSource =
      isLink ? source.getCanonicalLocation() : StorageIRI(path_.back().canonicalSource, source.getName());
  if (leadsBack(canonicalSource))
    throw refusal(ErrorCode::InvalidLocation, source.getLocation(), u"The folder leads back into itself");
  enter(source, destination, canonicalSource);
}

/// Coming to a folder around one that is being copied, the walk would come to that one again. And a
/// folder around its own copy grows as it is copied.
bool TreeCopy::leadsBack(const StorageIRI& canonicalSource) const {
  return contains(canonicalSource, path_.back().canonicalDestination) ||
         std::any_of(path_.begin(), path_.end(),
                     [&](const Level& level) { return contains(canonicalSource, level.canonicalSource); });
}

}  // namespace fstore
