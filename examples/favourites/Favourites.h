#pragma once

#include <foundation/storage/backend/support/EntryList.h>
#include <foundation/storage/backend/support/PathNames.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/IReadOnlyProvider.h>
#include <foundation/storage/provider/StorageItem.h>

#include <map>

namespace example {

using namespace foundation::storage::provider;
namespace support = foundation::storage::backend::support;

/// A small back end: one folder, with files in it that really are elsewhere, in any stores.
class Favourites final : public IReadOnlyProvider {
 public:
  using Files = std::map<std::u16string, StorageItem>;  ///< by their names here
  explicit Favourites(Files files) : files_(std::move(files)) {}
  ~Favourites() override { endChangePolling(); }

 private:
  bool doFileExists(const StorageIRI& location) const override {
    const auto names = support::pathNames(location);
    return names.size() == 1 && files_.contains(names.front());
  }
  bool doFolderExists(const StorageIRI& location) const override { return support::pathNames(location).empty(); }
  FileAttributes doGetFileAttributes(const StorageIRI& location) const override {
    return target(location).getFileAttributes();
  }
  FolderAttributes doGetFolderAttributes(const StorageIRI& location) const override {
    return folderExists(location) ? FolderAttributes({}, false) : throw refusal(location);
  }
  std::unique_ptr<ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const override {
    return target(location).openReadOnlyStream();
  }
  Listing doListAll(const StorageIRI& location) const override { return list(location, files_); }
  Listing doListFiles(const StorageIRI& location) const override { return list(location, files_); }
  Listing doListFolders(const StorageIRI& location) const override { return list(location, {}); }
  Exception refusal(const StorageIRI& location) const {  // of what is of the other kind, or is not there
    return {exists(location) == ExistenceType::AsNeither ? ErrorCode::ResourceNotFound : ErrorCode::InvalidLocation,
            location};
  }
  const StorageItem& target(const StorageIRI& location) const {
    return fileExists(location) ? files_.at(support::pathNames(location).front()) : throw refusal(location);
  }
  Listing list(const StorageIRI& location, const Files& files) const {
    return std::make_unique<support::EntryList>([files = folderExists(location) ? files : throw refusal(location)] {
      support::EntryList::Entries entries;
      for (const auto& [name, item] : files)
        entries.emplace_back(name, item.getFileAttributes());
      return entries;
    });
  }
  Files files_;
};

}  // namespace example
