#include <foundation/storage/backend/support/FilteredListing.h>

#include <stdexcept>
#include <utility>

namespace foundation::storage::backend::support {

FilteredListing::FilteredListing(std::unique_ptr<provider::IFolderEntryIterator> inner, Wildcard wildcard)
    : inner_(std::move(inner)), wildcard_(std::move(wildcard)) {}

FilteredListing::~FilteredListing() = default;

provider::FolderEntry FilteredListing::current() const {
  if (!current_)
    throw std::logic_error("A listing has no current entry before its first one and after its end.");
  return *current_;
}

bool FilteredListing::hasNext() const {
  while (!next_ && inner_->hasNext()) {
    inner_->next();
    auto entry = inner_->current();
    if (wildcard_.matches(entry.getName()))
      next_ = std::move(entry);
  }
  return next_.has_value();
}

void FilteredListing::next() {
  hasNext();
  current_ = std::exchange(next_, std::nullopt);
}

void FilteredListing::reset() {
  inner_->reset();
  next_.reset();
  current_.reset();
}

}  // namespace foundation::storage::backend::support
