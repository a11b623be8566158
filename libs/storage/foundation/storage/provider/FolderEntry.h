#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/ExtendedAttributes.h>
#include <foundation/storage/provider/FileAttributes.h>
#include <foundation/storage/provider/FolderAttributes.h>

#include <cstdint>
#include <optional>
#include <string>

namespace foundation::storage::provider {

/// One entry of a listing.
class FOUNDATION_EXPORT FolderEntry {
 public:
  /// What an entry is; a link is what it leads to, and a file where that is missing.
  enum class EntryType : std::int32_t { File = 0, Folder = 1 };

  /// @param name  within the listed folder; in a recursive listing the path relative to it, with '/'
  /// @{
  FolderEntry(std::u16string name, FileAttributes attributes);
  FolderEntry(std::u16string name, FolderAttributes attributes);
  /// @}
  /// Without attributes, as listings of names give it.
  FolderEntry(std::u16string name, EntryType type);

  /// Within the listed folder; in a recursive listing the path relative to it, with '/'. Not escaped.
  const std::u16string& getName() const { return name_; }
  /// Whether it is a file; else it is a folder.
  bool isFile() const { return type_ == EntryType::File; }

  /// Present where the entry is a file and the listing gives attributes.
  const std::optional<FileAttributes>& getFileAttributes() const { return fileAttributes_; }
  /// Present where the entry is a folder and the listing gives attributes.
  const std::optional<FolderAttributes>& getFolderAttributes() const { return folderAttributes_; }
  /// Present where the back end has set them.
  const std::optional<ExtendedAttributes>& getExtendedAttributes() const { return extendedAttributes_; }

  /// Sets them, for back ends whose listings know them.
  /// @return this object
  FolderEntry& withExtendedAttributes(ExtendedAttributes attributes);

 private:
  std::u16string name_;
  EntryType type_;
  std::optional<FileAttributes> fileAttributes_;
  std::optional<FolderAttributes> folderAttributes_;
  std::optional<ExtendedAttributes> extendedAttributes_;
};

}  // namespace foundation::storage::provider
