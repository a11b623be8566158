#include <fl/filesystem/Path.h>

#include <algorithm>

namespace fl::filesystem {
namespace {

using View = std::u16string_view;

bool isLetter(char16_t unit) { return (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z'; }

bool beginsWithDrive(View path) { return path.size() >= 2 && isLetter(path[0]) && path[1] == u':'; }

bool beginsWithServer(View path) { return path.size() > 2 && path.starts_with(u"//") && path[2] != u'/'; }

/// Without a '/' at the end, but for one that belongs to the root.
View trimmed(View path, std::size_t rootLength) {
  while (path.size() > rootLength && path.back() == u'/')
    path.remove_suffix(1);
  return path;
}

}  // namespace

upath make_generic_form(const upath& path) {
  const auto& text = path.string();
  if (!text.starts_with(u"//"))
    return path;
  const bool isNetwork = beginsWithServer(text);
  const auto prefix = isNetwork ? text.substr(0, text.find(u'/', 2)) : std::u16string();
  const auto begin = std::min(text.find_first_not_of(u'/', prefix.size()), text.size());
  return upath(prefix + u"/" + text.substr(begin));
}

std::size_t root_length(const upath& path) {
  const View text = path.string();
  if (beginsWithServer(text)) {
    const auto end = text.find(u'/', 2);
    return end == View::npos ? text.size() : end + 1;
  }
  if (beginsWithDrive(text))
    return text.size() > 2 && text[2] == u'/' ? 3 : 2;
  return text.starts_with(u'/') ? 1 : 0;
}

bool is_absolute(const upath& path) {
  const View text = path.string();
  return text.starts_with(u'/') || (beginsWithDrive(text) && text.size() > 2 && text[2] == u'/');
}

upath extract_root_path(const upath& path) {
  auto root = path.string().substr(0, root_length(path));
  if (!root.empty() && root.back() != u'/')
    root.push_back(u'/');
  return upath(std::move(root));
}

upath extract_parent_path(const upath& path) {
  const auto rootLength = root_length(path);
  const auto whole = trimmed(path.string(), rootLength);
  if (whole.size() <= rootLength)
    return upath();
  const auto slash = whole.rfind(u'/');
  const auto end = slash == View::npos ? 0 : std::max(slash, rootLength);
  return upath(std::u16string(trimmed(whole.substr(0, end), rootLength)));
}

upath extract_filename(const upath& path) {
  const auto rootLength = root_length(path);
  const auto whole = trimmed(path.string(), rootLength);
  if (whole == u"/")
    return upath(u"/");
  if (whole.size() > rootLength)
    return upath(std::u16string(whole.substr(std::max(whole.rfind(u'/') + 1, rootLength))));
  const auto begin = std::min(whole.find_first_not_of(u'/'), whole.size());  // a drive or a server
  return upath(std::u16string(whole.substr(begin, whole.find(u'/', begin) - begin)));
}

}  // namespace fl::filesystem
