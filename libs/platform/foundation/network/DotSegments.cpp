#include <foundation/network/DotSegments.h>

#include <algorithm>

namespace foundation::network {

std::u16string removeDotSegments(std::u16string_view path) {
  while (path.starts_with(u"./") || path.starts_with(u"../"))
    path.remove_prefix(path.find(u'/') + 1);
  if (path == u"." || path == u"..")
    return {};
  std::u16string out;
  out.reserve(path.size());
  for (std::size_t at = 0; at < path.size();) {
    // A segment is taken with the '/' before it; only the first of a rootless path has none.
    const std::size_t begin = path[at] == u'/' ? at + 1 : at;
    const std::size_t end = std::min(path.find(u'/', begin), path.size());
    const auto segment = path.substr(begin, end - begin);
    const bool isDots = segment == u"." || segment == u"..";
    if (segment == u"..") {
      const auto parent = out.rfind(u'/');
      out.resize(parent == std::u16string::npos ? 0 : parent);
    }
    if (!isDots)
      out.append(path.substr(at, end - at));
    else if (end == path.size())
      out.push_back(u'/');
    at = end;
  }
  return out;
}

}  // namespace foundation::network
