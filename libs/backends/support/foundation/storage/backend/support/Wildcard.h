#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/CaseModifier.h>

#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::support {

/// The pattern of a listing, as all our back ends understand it:
///
///     *       any run of characters, also none
///     ?       exactly one character
///     [a-z]   one character of a set of single ones and ranges; a ']' that comes first is one of them, and so is
///             a '-' that comes first or last
///     [!a-z]  one character that is not in the set
///
/// All else stands for itself, also a '[' that is never closed. A character is a code point, so that a
/// surrogate pair is one, and a lone surrogate, too. Any number of threads may use one object.
class FOUNDATION_EXPORT Wildcard {
 public:
  /// @param pattern  of a name, not of a path
  /// @param rule     `InSensitive` compares after lower-casing both, ranges too, as the default path comparator does
  explicit Wildcard(std::u16string_view pattern, provider::CaseModifier rule = provider::CaseModifier::Sensitive);

  /// Whether the last name of `path` matches as a whole. Takes time in proportion to the product of both
  /// lengths at most.
  bool matches(std::u16string_view path) const;

 private:
  struct Range {
    char32_t first;
    char32_t last;
  };
  /// What one character, or a run of them, has to be.
  struct Element {
    bool isRun = false;
    bool isNegated = false;
    std::vector<Range> ranges;  ///< of a run none
  };

  static bool accepts(const Element& element, char32_t character);
  std::u32string characters(std::u16string_view text) const;
  /// Reads the set that begins behind a '['.
  /// @return the position behind the set, or `begin` where it is never closed
  static std::size_t readSet(const std::u32string& pattern, std::size_t begin, Element& set);

  provider::CaseModifier rule_;
  std::vector<Element> elements_;
};

}  // namespace foundation::storage::backend::support
