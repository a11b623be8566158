#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/PathViewIterator.h>

#include <boost/utility/string_view.hpp>

#include <string>

namespace foundation::storage::provider {

/// A look at a '/'-separated path in UTF-16, to take it apart without copying:
///
///     PathView view(u"/a/b");
///     view.getParentView();                    // "/a"
///     for (auto segment : view) ...            // "a", "b"
///
/// It refers to text owned elsewhere, which must outlive it. Only the `...Copy` operations allocate;
/// nothing else throws.
class FOUNDATION_EXPORT PathView {
 public:
  /// The form of texts here.
  using StringView = boost::basic_string_view<char16_t>;

  /// Over the empty text.
  PathView() = default;

  /// Over `text`; where that ends in '/' and is at least two code units long, without its last two
  /// code units: "/abc/" is seen as "/ab", "/a/" as "/".
  explicit PathView(StringView text);

  /// The text as it is seen.
  /// @{
  StringView toStringView() const noexcept { return view_; }
  std::u16string toStringCopy() const;
  /// @}

  /// Whether the view holds a '/' and is not "/" itself.
  bool hasParent() const noexcept;

  /// What stands before the last '/'; "/" for a name directly under the root, empty for the root and
  /// for a view without '/'. It is trimmed as a view over the same text would be.
  /// @{
  PathView getParentView() const noexcept;
  std::u16string getParentCopy() const;
  /// @}

  /// What follows the last '/'; "/" for the root. The text must end in NUL, and the view is read up to
  /// that NUL, beyond its own end if it ends earlier: use `getFilenameCopy()` on views over part of a text.
  StringView getFilenameStringView() const noexcept;
  /// The same, ending where the view ends.
  std::u16string getFilenameCopy() const;

  /// The segments from the first to the last, or to the first empty one.
  /// @{
  PathViewIterator begin() const { return PathViewIterator(view_); }
  PathViewIterator end() const { return {}; }
  PathViewIterator cbegin() const { return begin(); }
  PathViewIterator cend() const { return end(); }
  /// @}

 private:
  StringView view_;
};

}  // namespace foundation::storage::provider
