#pragma once

#include <fstore/Report.h>

#include <foundation/storage/provider/FolderEntry.h>
#include <foundation/storage/provider/StorageItem.h>

#include <cstddef>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace fstore {

/// Shows all that a folder holds, to any depth: each folder's entries by name, in code units, and what an entry holds
/// right behind it. Links are shown, not followed. Folders that cannot be read are reported, and the walk goes on.
class TreeWalk {
 public:
  static constexpr std::size_t anyDepth = std::numeric_limits<std::size_t>::max();

  struct Place {
    const foundation::storage::provider::StorageItem& item;
    const foundation::storage::provider::FolderEntry& entry;
    std::u16string_view path;  ///< relative to where the walk began, with '/'
    std::size_t depth;         ///< from 1
    bool isLast;               ///< in its folder
  };
  using Selection = std::function<bool(const foundation::storage::provider::FolderEntry&)>;
  using Visit = std::function<void(const Place&)>;

  /// @param selection  which entries to see at all; folders that it leaves out are not entered
  /// @param maxDepth   of what is shown
  TreeWalk(Report& report, Selection selection, std::size_t maxDepth, Visit visit)
      : report_(report), selection_(std::move(selection)), maxDepth_(maxDepth), visit_(std::move(visit)) {}

  /// Passes through what the visit throws.
  void run(const foundation::storage::provider::StorageItem& folder);

 private:
  struct Level {
    foundation::storage::provider::StorageItem folder;
    std::u16string path;
    std::vector<foundation::storage::provider::FolderEntry> entries;
    std::size_t next = 0;
  };

  void enter(const foundation::storage::provider::StorageItem& folder, std::u16string path);
  void show(const foundation::storage::provider::FolderEntry& entry);

  Report& report_;
  Selection selection_;
  std::size_t maxDepth_;
  Visit visit_;
  std::vector<Level> levels_;  ///< from the outermost inwards; not the call stack, which is not deep enough
};

}  // namespace fstore
