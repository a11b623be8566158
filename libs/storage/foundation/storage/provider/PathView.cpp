#include <foundation/storage/provider/PathView.h>

#include <string>

namespace foundation::storage::provider {
namespace {

using StringView = PathView::StringView;

bool isRoot(StringView view) { return view.size() == 1 && view.front() == u'/'; }

StringView trimmed(StringView text) {
  if (text.size() >= 2 && text.back() == u'/')
    text.remove_suffix(2);
  return text;
}

std::u16string copy(StringView view) { return std::u16string(view.begin(), view.end()); }

}  // namespace

PathView::PathView(StringView text) : view_(trimmed(text)) {}

std::u16string PathView::toStringCopy() const { return copy(view_); }

bool PathView::hasParent() const noexcept { return !isRoot(view_) && view_.find(u'/') != StringView::npos; }

PathView PathView::getParentView() const noexcept {
  const auto slash = view_.rfind(u'/');
  if (slash == StringView::npos)
    return {};
  const bool isUnderRoot = slash == 0 && view_.size() > 1;
  return PathView(StringView(view_.data(), isUnderRoot ? 1 : slash));
}

std::u16string PathView::getParentCopy() const { return getParentView().toStringCopy(); }

StringView PathView::getFilenameStringView() const noexcept {
  const auto slash = view_.rfind(u'/');
  if (isRoot(view_) || slash == StringView::npos)
    return view_;
  return StringView(view_.data() + slash + 1);
}

std::u16string PathView::getFilenameCopy() const {
  const auto slash = view_.rfind(u'/');
  if (isRoot(view_) || slash == StringView::npos)
    return toStringCopy();
  return copy(StringView(view_.data() + slash + 1, view_.size() - slash - 1));
}

}  // namespace foundation::storage::provider
