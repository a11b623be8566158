#include <foundation/storage/backend/support/Wildcard.h>

#include <fl/i18n/Case.h>
#include <fl/i18n/Surrogates.h>

#include <algorithm>

namespace foundation::storage::backend::support {
namespace {

constexpr char32_t lastCharacter = 0x10FFFF;

}  // namespace

Wildcard::Wildcard(std::u16string_view pattern, provider::CaseModifier rule) : rule_(rule) {
  const auto text = characters(pattern);
  // Behind it no set ends: without this, many open brackets would be as many looks at all that follows.
  const auto lastEnd = text.rfind(U']') + 1;
  for (std::size_t at = 0; at < text.size();) {
    const char32_t character = text[at++];
    Element element;
    if (character == U'*')
      element.isRun = true;
    else if (character == U'?')
      element.ranges = {{0, lastCharacter}};
    else if (const auto end = character == U'[' && at < lastEnd ? readSet(text, at, element) : at; end != at)
      at = end;
    else
      element.ranges = {{character, character}};
    elements_.push_back(std::move(element));
  }
}

std::size_t Wildcard::readSet(const std::u32string& pattern, std::size_t begin, Element& set) {
  std::size_t at = begin;
  set.isNegated = at < pattern.size() && pattern[at] == U'!';
  at += set.isNegated ? 1 : 0;
  for (const std::size_t first = at; at < pattern.size(); ++at) {
    if (pattern[at] == U']' && at > first)
      return at + 1;
    const bool isRange = at + 2 < pattern.size() && pattern[at + 1] == U'-' && pattern[at + 2] != U']';
    set.ranges.push_back({pattern[at], pattern[isRange ? at + 2 : at]});
    at += isRange ? 2 : 0;
  }
  set = {};
  return begin;
}

std::u32string Wildcard::characters(std::u16string_view text) const {
  std::u16string folded(text);
  if (rule_ == provider::CaseModifier::InSensitive)
    folded = fl::i18n::detail::transform(folded, fl::i18n::to_lower());
  std::u32string result;
  result.reserve(folded.size());
  for (std::size_t at = 0; at < folded.size(); ++at)
    if (fl::i18n::isPairAt(folded, at))
      result.push_back(fl::i18n::pairAt(folded, at++));
    else
      result.push_back(folded[at]);
  return result;
}

bool Wildcard::accepts(const Element& element, char32_t character) {
  const auto holds = [&](const Range& range) { return range.first <= character && character <= range.last; };
  return std::any_of(element.ranges.begin(), element.ranges.end(), holds) != element.isNegated;
}

bool Wildcard::matches(std::u16string_view path) const {
  const auto name = characters(path.substr(path.rfind(u'/') + 1));
  std::size_t element = 0;
  std::size_t at = 0;
  // Only the last run is ever made longer: what an earlier one could take besides, the last one can, too.
  std::size_t run = elements_.size();
  std::size_t runEnd = 0;
  while (at < name.size()) {
    if (element < elements_.size() && elements_[element].isRun) {
      run = element++;
      runEnd = at;
    } else if (element < elements_.size() && accepts(elements_[element], name[at])) {
      ++element;
      ++at;
    } else if (run < elements_.size()) {
      element = run + 1;
      at = ++runEnd;
    } else {
      return false;
    }
  }
  return std::all_of(elements_.begin() + static_cast<std::ptrdiff_t>(element), elements_.end(),
                     [](const Element& rest) { return rest.isRun; });
}

}  // namespace foundation::storage::backend::support
