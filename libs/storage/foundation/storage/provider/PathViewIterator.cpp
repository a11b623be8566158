#include <foundation/storage/provider/PathViewIterator.h>

#include <cstddef>

namespace foundation::storage::provider {

PathViewIterator::PathViewIterator(StringView text) : view_(text), cursor_(text.data()) {
  if (!view_.empty() && view_.front() == u'/')
    ++cursor_;
  increment();
}

bool PathViewIterator::equal(const PathViewIterator& other) const noexcept {
  return this == &other || segment_ == other.segment_;
}

void PathViewIterator::increment() {
  if (cursor_ == view_.data() + view_.size()) {
    segment_ = {};
    return;
  }
  const auto at = static_cast<std::size_t>(cursor_ - view_.data());
  const auto slash = view_.find(u'/', at);
  const bool isLast = slash == StringView::npos;
  segment_ = view_.substr(at, isLast ? StringView::npos : slash - at);
  cursor_ = view_.data() + (isLast ? view_.size() : slash + 1);
}

}  // namespace foundation::storage::provider
