#pragma once

#include <fstore/Entries.h>
#include <fstore/FileCopier.h>
#include <fstore/Report.h>

#include <foundation/storage/provider/StorageItem.h>

#include <cstddef>
#include <string>
#include <vector>

namespace fstore {

/// Copies a folder with all it holds, to any depth. Folders that the destination has already are filled
/// up. Links are followed; what would never end is not: folders that lead back to one that is being
/// copied, or to the copy. Entries that fail are reported, and the rest is copied.
class TreeCopy {
 public:
  TreeCopy(Report& report, FileCopier& files) : report_(report), files_(files) {}

  /// Ends early where the copier is stopped; the last files may still be under way afterwards. Throws `Exception`,
  /// before anything is written, where the folder would be copied into itself, and where the destination cannot be made
  /// a folder.
  void run(const foundation::storage::provider::StorageItem& source,
           const foundation::storage::provider::StorageItem& destination);

 private:
  /// A folder being copied.
  struct Level {
    foundation::storage::provider::StorageItem source;
    foundation::storage::provider::StorageItem destination;
    foundation::storage::provider::StorageIRI canonicalSource;
    foundation::storage::provider::StorageIRI canonicalDestination;
    std::vector<Entry> entries;
    std::size_t next = 0;
    /// The destination is a link, so that what is written to it may also be written to elsewhere in this copy.
    bool isShared = false;
  };

  void enter(const foundation::storage::provider::StorageItem& source,
             const foundation::storage::provider::StorageItem& destination,
             const foundation::storage::provider::StorageIRI& canonicalSource);
  foundation::storage::provider::StorageIRI ensureFolder(
      const foundation::storage::provider::StorageItem& destination) const;
  void leave();
  void copyEntry(const Entry& entry);
  void copySubfolder(const foundation::storage::provider::StorageItem& source,
                     const foundation::storage::provider::StorageItem& destination, bool isLink);
  bool leadsBack(const foundation::storage::provider::StorageIRI& canonicalSource) const;

  Report& report_;
  FileCopier& files_;
  std::vector<Level> path_;  ///< from the outermost folder inwards; not the call stack, which is not deep enough
};

}  // namespace fstore
