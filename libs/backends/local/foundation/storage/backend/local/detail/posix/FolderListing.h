#pragma once

#include <foundation/storage/backend/local/detail/posix/Configuration.h>
#include <foundation/storage/backend/local/detail/posix/FolderReader.h>
#include <foundation/storage/provider/IFolderEntryIterator.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <string>
#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

enum class EntryFilter { All, Files, Folders };
enum class EntryDetail { NamesOnly, Attributes };

/// A listing of one folder, read as the walk goes on.
///
/// A link is listed as what it leads to: a folder, or else a file; one that leads nowhere is a file
/// with its own attributes. Entries that vanish before they are reached are left out. An entry whose
/// attributes may not be read is listed without.
class FolderListing final : public provider::IFolderEntryIterator {
 public:
  /// Throws `Exception` where `location` is no folder that can be listed.
  FolderListing(Configuration configuration, const provider::StorageIRI& location, EntryFilter filter,
                EntryDetail detail);

  /// Of an open folder.
  /// @param prefix  what the entries' names begin with
  FolderListing(Configuration configuration, const provider::StorageIRI& location, Descriptor folder,
                EntryFilter filter, EntryDetail detail, std::u16string prefix = {});

  provider::FolderEntry current() const override;
  bool hasNext() const override;
  void next() override;
  void reset() override;

  /// An entry, and whether it is a link, whatever that leads to.
  struct Taken {
    provider::FolderEntry entry;
    bool isLink;
  };

  /// Instead of `next` and `current`: the next entry, if there is one, without copying it.
  std::optional<Taken> take();

 private:
  using EntryType = provider::FolderEntry::EntryType;

  /// The entry's status, following links as far as they lead; none where the system refuses it.
  struct Examined {
    bool exists = true;
    bool isLink = false;
    std::optional<struct stat> status;
  };

  void readNext() const;
  Examined examine(const RawEntry& entry) const;
  int statusBehind(const char* link, struct stat& status) const;
  std::u16string nameOf(const RawEntry& entry) const;
  std::optional<provider::FolderEntry> makeEntry(const RawEntry& entry) const;
  provider::FolderEntry withAttributes(const RawEntry& entry, const Examined& examined, bool isFolder) const;
  bool passes(bool isFolder) const;

  bool isLeftOut(const char* name) const;

  Configuration configuration_;
  EntryFilter filter_;
  EntryDetail detail_;
  std::string folderPath_;  ///< ends in '/'
  std::u16string prefix_;
  // Looking ahead is part of the const question whether there is more.
  mutable FolderReader reader_;
  mutable std::optional<provider::FolderEntry> next_;
  mutable bool isNextLink_ = false;
  mutable bool atEnd_ = false;
  std::optional<provider::FolderEntry> current_;
};

}  // namespace foundation::storage::backend::local::detail
