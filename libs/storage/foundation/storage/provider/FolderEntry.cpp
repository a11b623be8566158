#include <foundation/storage/provider/FolderEntry.h>

#include <utility>

namespace foundation::storage::provider {

FolderEntry::FolderEntry(std::u16string name, FileAttributes attributes)
    : name_(std::move(name)), type_(EntryType::File), fileAttributes_(std::move(attributes)) {}

FolderEntry::FolderEntry(std::u16string name, FolderAttributes attributes)
    : name_(std::move(name)), type_(EntryType::Folder), folderAttributes_(std::move(attributes)) {}

FolderEntry::FolderEntry(std::u16string name, EntryType type) : name_(std::move(name)), type_(type) {}

FolderEntry& FolderEntry::withExtendedAttributes(ExtendedAttributes attributes) {
  extendedAttributes_ = std::move(attributes);
  return *this;
}

}  // namespace foundation::storage::provider
