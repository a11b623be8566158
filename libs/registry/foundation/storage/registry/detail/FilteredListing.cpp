#include <foundation/storage/registry/detail/FilteredListing.h>

#include <utility>

namespace foundation::storage::registry::detail {

FilteredListing::FilteredListing(std::unique_ptr<provider::IFolderEntryIterator> inner, AskedLocation folder)
    : inner_(std::move(inner)), folder_(std::move(folder)) {}

bool FilteredListing::hasNext() const {
  return folder_.run([this](const provider::StorageIRI&) { return inner_->hasNext(); });
}

void FilteredListing::next() {
  folder_.run([this](const provider::StorageIRI&) { inner_->next(); });
}

void FilteredListing::reset() {
  folder_.run([this](const provider::StorageIRI&) { inner_->reset(); });
}

}  // namespace foundation::storage::registry::detail
