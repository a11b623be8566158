#pragma once

#include <foundation/storage/provider/IFolderEntryIterator.h>
#include <foundation/storage/registry/detail/AskedLocation.h>

#include <memory>

namespace foundation::storage::registry::detail {

/// Another listing, whose failures have the location that was asked for.
class FilteredListing final : public provider::IFolderEntryIterator {
 public:
  FilteredListing(std::unique_ptr<provider::IFolderEntryIterator> inner, AskedLocation folder);

  provider::FolderEntry current() const override { return inner_->current(); }
  bool hasNext() const override;
  void next() override;
  void reset() override;

 private:
  std::unique_ptr<provider::IFolderEntryIterator> inner_;
  AskedLocation folder_;
};

}  // namespace foundation::storage::registry::detail
