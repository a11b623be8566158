#pragma once

#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/backend/s3/detail/Session.h>
#include <foundation/storage/backend/support/ListingScope.h>
#include <foundation/storage/provider/IFolderEntryIterator.h>

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail {

/// The entries of a folder, or of the tree below it, a page at a time, whatever their number. A folder comes before
/// what it holds. Entries with an empty name, and what lies in such a folder, are left out: no child of the listed
/// folder names them.
class Listing final : public provider::IFolderEntryIterator {
 public:
  /// Asks for the first page; throws where there is no folder.
  /// @param begin  of the names that are wanted, in UTF-8; empty for a tree
  Listing(SessionPtr session, Place folder, const support::ListingScope& scope, const std::string& begin);
  ~Listing() override;

  provider::FolderEntry current() const override;
  bool hasNext() const override;
  void next() override;
  void reset() override;

 private:
  using Entries = std::deque<provider::FolderEntry>;

  void fetchFirst();
  void fetchNext() const;
  void take(const wire::ListPage& page) const;
  void takeObject(const wire::ListedObject& object) const;
  void takeFolders(std::string_view path) const;
  void takeFolder(std::string_view path) const;

  SessionPtr session_;
  Place folder_;
  support::ListingScope scope_;
  client::Client::Listing request_;
  std::optional<provider::FolderEntry> current_;
  // Looking ahead is part of the const question whether there is more.
  mutable Entries entries_;      ///< that follow
  mutable std::string token_;    ///< of the page after them; empty behind the last one
  mutable std::string visited_;  ///< the folder, relative to the listed one, that the walk is in, with '/'
};

/// What the names that match a wildcard begin with, as far as the wildcard says.
std::string literalBegin(std::u16string_view wildcard);

}  // namespace foundation::storage::backend::s3::detail
