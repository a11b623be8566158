#include <foundation/network/DotSegments.h>

namespace foundation::network {

std::u16string removeDotSegments(std::u16string_view path) {
  const bool isRooted = path.starts_with(u'/');
  std::u16string out;
  out.reserve(path.size());
  std::size_t at = 0;
  while (at < path.size()) {
    // A segment is taken with the '/' before it; only the first of a rootless path has none.
    const std::size_t begin = path[at] == u'/' ? at + 1 : at;
    const std::size_t end = std::min(path.find(u'/', begin), path.size());
    const auto segment = path.substr(begin, end - begin);
    const bool isLast = end == path.size();
    if (segment == u"..") {
      const auto parent = out.rfind(u'/');
      out.resize(parent == std::u16string::npos ? 0 : parent);
    }
    if (segment != u"." && segment != u"..") {
      if (begin > at && (isRooted || !out.empty()))
        out.push_back(u'/');
      out.append(segment);
    } else if (isLast && (isRooted || !out.empty())) {
      out.push_back(u'/');
    }
    at = end;
  }
  return out;
}

}  // namespace foundation::network
