#pragma once

#include <foundation/storage/backend/local/detail/posix/FolderListing.h>
#include <foundation/storage/provider/IFolderEntryIterator.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <string>
#include <vector>

namespace foundation::storage::backend::local::detail {

/// A listing of a whole tree, read as the walk goes on: each folder's entries, and then those of its subfolders.
/// So there are two folders open, this one and the top, however deep the tree is.
///
/// Links are listed as what they lead to, but not descended into. A subfolder that vanishes before it is reached is
/// left out. One that cannot be read is an `Exception` with its location; the walk can go on after that, without it.
class RecursiveListing final : public provider::IFolderEntryIterator {
 public:
  /// Throws `Exception` where `location` is no folder that can be listed.
  RecursiveListing(Configuration configuration, const provider::StorageIRI& location, EntryDetail detail);

  provider::FolderEntry current() const override;
  bool hasNext() const override;
  void next() override;
  void reset() override;

 private:
  void begin() const;
  void readNext() const;
  bool openNextFolder() const;
  Descriptor openWithin(const std::string& path) const;

  Configuration configuration_;
  provider::StorageIRI location_;
  EntryDetail detail_;
  // Looking ahead is part of the const question whether there is more.
  mutable Descriptor top_;
  mutable std::optional<FolderListing> folder_;  ///< being listed
  mutable std::vector<std::u16string> folders_;  ///< still to be listed, the next one last
  mutable std::optional<provider::FolderEntry> next_;
  std::optional<provider::FolderEntry> current_;
};

}  // namespace foundation::storage::backend::local::detail
