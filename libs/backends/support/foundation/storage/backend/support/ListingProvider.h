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
  /// The listing of a folder; throws where there is none.
  virtual Listing list(const provider::StorageIRI& location, const ListingScope& scope) const = 0;

  /// The same, by the names that match. Default: takes the case of letters into account.
  virtual Listing listMatching(const provider::StorageIRI& location, const ListingScope& scope,
                               const std::u16string& wildcard) const {
    return std::make_unique<FilteredListing>(list(location, scope), Wildcard(wildcard));
  }

  // Under one name, so that subclasses may use all others for what is theirs.
  struct Scopes {
    using EntryType = provider::FolderEntry::EntryType;
    static constexpr ListingScope all{};
    static constexpr ListingScope files{.only = EntryType::File};
    static constexpr ListingScope folders{.only = EntryType::Folder};
    static constexpr ListingScope allNames{.givesAttributes = false};
    static constexpr ListingScope fileNames{.only = EntryType::File, .givesAttributes = false};
    static constexpr ListingScope folderNames{.only = EntryType::Folder, .givesAttributes = false};
    static constexpr ListingScope tree{.isRecursive = true};
    static constexpr ListingScope treeNames{.isRecursive = true, .givesAttributes = false};
  };

  Listing doListAll(const provider::StorageIRI& location) const override { return list(location, Scopes::all); }
  Listing doListAllWildcards(const provider::StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, Scopes::all, wildcard);
  }
  Listing doListFiles(const provider::StorageIRI& location) const override { return list(location, Scopes::files); }
  Listing doListFilesWildcards(const provider::StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, Scopes::files, wildcard);
  }
  Listing doListFolders(const provider::StorageIRI& location) const override { return list(location, Scopes::folders); }
  Listing doListFoldersWildcards(const provider::StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, Scopes::folders, wildcard);
  }
  Listing doListAllNamesOnly(const provider::StorageIRI& location) const override {
    return list(location, Scopes::allNames);
  }
  Listing doListAllNamesOnlyWildcards(const provider::StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, Scopes::allNames, wildcard);
  }
  Listing doListFoldersNamesOnly(const provider::StorageIRI& location) const override {
    return list(location, Scopes::folderNames);
  }
  Listing doListFoldersNamesOnlyWildcards(const provider::StorageIRI& location,
                                          std::u16string wildcard) const override {
    return listMatching(location, Scopes::folderNames, wildcard);
  }
  Listing doListFilesNamesOnly(const provider::StorageIRI& location) const override {
    return list(location, Scopes::fileNames);
  }
  Listing doListFilesNamesOnlyWildcards(const provider::StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, Scopes::fileNames, wildcard);
  }
  Listing doListAllRecursive(const provider::StorageIRI& location) const override {
    return list(location, Scopes::tree);
  }
  Listing doListAllRecursiveWildcards(const provider::StorageIRI& location, std::u16string wildcard) const override {
    return listMatching(location, Scopes::tree, wildcard);
  }
  Listing doListAllRecursiveNamesOnly(const provider::StorageIRI& location) const override {
    return list(location, Scopes::treeNames);
  }
  Listing doListAllRecursiveNamesOnlyWildcards(const provider::StorageIRI& location,
                                               std::u16string wildcard) const override {
    return listMatching(location, Scopes::treeNames, wildcard);
  }
};

}  // namespace foundation::storage::backend::support
