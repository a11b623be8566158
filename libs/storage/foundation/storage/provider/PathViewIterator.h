#pragma once

#include <foundation/core/Export.h>

#include <boost/iterator/iterator_facade.hpp>
#include <boost/utility/string_view.hpp>

namespace foundation::storage::provider {

/// Walks the segments of a '/'-separated path in UTF-16; see `PathView`.
///
/// Two iterators are equal where their segments have the same text, wherever they stand, and the end
/// has the empty segment. So a walk ends at the first empty segment: "a//b" yields "a" only.
class FOUNDATION_EXPORT PathViewIterator
    : public boost::iterator_facade<PathViewIterator, const boost::basic_string_view<char16_t>,
                                    boost::forward_traversal_tag, boost::basic_string_view<char16_t>> {
 public:
  /// The form of texts here.
  using StringView = boost::basic_string_view<char16_t>;

  /// The end.
  PathViewIterator() = default;

  /// At the first segment of `text`; a '/' at its beginning is passed over.
  explicit PathViewIterator(StringView text);

 private:
  friend class boost::iterator_core_access;

  StringView dereference() const noexcept { return segment_; }
  bool equal(const PathViewIterator& other) const noexcept;
  void increment();

  StringView view_;
  const char16_t* cursor_ = nullptr;  ///< the first code unit not yet passed, or the end of the view
  StringView segment_;
};

}  // namespace foundation::storage::provider
