#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/backend/support/Wildcard.h>
#include <foundation/storage/provider/IFolderEntryIterator.h>

#include <memory>
#include <optional>

namespace foundation::storage::backend::support {

/// The entries of another listing whose names match a wildcard; of a path, the last name.
class FOUNDATION_EXPORT FilteredListing final : public provider::IFolderEntryIterator {
 public:
  /// @param inner  not null; read as this listing is walked
  FilteredListing(std::unique_ptr<provider::IFolderEntryIterator> inner, Wildcard wildcard);
  ~FilteredListing() override;

  provider::FolderEntry current() const override;
  bool hasNext() const override;
  void next() override;
  void reset() override;

 private:
  std::unique_ptr<provider::IFolderEntryIterator> inner_;
  Wildcard wildcard_;
  // Looking ahead is part of the const question whether there is more.
  mutable std::optional<provider::FolderEntry> next_;
  std::optional<provider::FolderEntry> current_;
};

}  // namespace foundation::storage::backend::support
