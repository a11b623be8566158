#pragma once

#include <foundation/storage/backend/support/FilteredListing.h>
#include <foundation/storage/backend/support/ListingScope.h>
#include <foundation/storage/backend/support/Wildcard.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <memory>
#include <string>

/// What back ends have in common; optional for those who write one.
namespace foundation::storage::backend::support {

/// All listings of a provider out of one operation, for back ends that list everything in the same way:
///
///     class MyProvider final : public support::ListingProvider<provider::IConfigurableProvider> { ... };
///
/// @tparam Base  `IProvider`, or one of its abstract subclasses
template <class Base>
class ListingProvider : public Base {
 public:
  using typename Base::Listing;

 private:
  using StorageIRI = provider::StorageIRI;
  using EntryType = provider::FolderEntry::EntryType;

  /// The listing of a folder; throws where there is none.
  virtual Listing list(const StorageIRI& location, const ListingScope& scope) const = 0;

  /// The same, by the names that match. Default: takes the case of letters into account.
  virtual Listing listMatching(const StorageIRI& location, const ListingScope& scope,
                               const std::u16string& wildcard) const {
    return std::make_unique<FilteredListing>(list(location, scope), Wildcard(wildcard));
  }

  static constexpr ListingScope all{};
  static constexpr ListingScope files{.only = EntryType::File};
  static constexpr ListingScope folders{.only = EntryType::Folder};
  static constexpr ListingScope allNames{.givesAttributes = false};
  static constexpr ListingScope fileNames{.only = EntryType::File, .givesAttributes = false};
  static constexpr ListingScope folderNames{.only = EntryType::Folder, .givesAttributes = false};
  static constexpr ListingScope tree{.isRecursive = true};
  static constexpr ListingScope treeNames{.isRecursive = true, .givesAttributes = false};

  Listing doListAll(const StorageIRI& location) const override { return list(location, all); }
  Listing doListAllWildcards(const StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, all, wildcard);
  }
  Listing doListFiles(const StorageIRI& location) const override { return list(location, files); }
  Listing doListFilesWildcards(const StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, files, wildcard);
  }
  Listing doListFolders(const StorageIRI& location) const override { return list(location, folders); }
  Listing doListFoldersWildcards(const StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, folders, wildcard);
  }
  Listing doListAllNamesOnly(const StorageIRI& location) const override { return list(location, allNames); }
  Listing doListAllNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, allNames, wildcard);
  }
  Listing doListFoldersNamesOnly(const StorageIRI& location) const override { return list(location, folderNames); }
  Listing doListFoldersNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, folderNames, wildcard);
  }
  Listing doListFilesNamesOnly(const StorageIRI& location) const override { return list(location, fileNames); }
  Listing doListFilesNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, fileNames, wildcard);
  }
  Listing doListAllRecursive(const StorageIRI& location) const override { return list(location, tree); }
  Listing doListAllRecursiveWildcards(const StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, tree, wildcard);
  }
  Listing doListAllRecursiveNamesOnly(const StorageIRI& location) const override { return list(location, treeNames); }
  Listing doListAllRecursiveNamesOnlyWildcards(const StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, treeNames, wildcard);
  }
};

}  // namespace foundation::storage::backend::support
