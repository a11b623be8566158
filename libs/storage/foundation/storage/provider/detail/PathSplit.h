#pragma once

#include <string_view>

namespace foundation::storage::provider::detail {

/// A path cut before its last segment.
struct PathSplit {
  std::u16string_view parent;  ///< everything before the segment, the '/' included
  std::u16string_view name;    ///< the segment without a '/' after it
};

/// "/a/b" and "/a/b/" give "/a/" and "b"; "/" gives an empty parent and the name "/".
inline PathSplit splitPath(std::u16string_view path) {
  if (path == u"/")
    return {{}, path};
  const auto slash = path.size() < 2 ? std::u16string_view::npos : path.rfind(u'/', path.size() - 2);
  const auto begin = slash == std::u16string_view::npos ? 0 : slash + 1;
  const auto segment = path.substr(begin);
  return {path.substr(0, begin), segment.substr(0, segment.find(u'/'))};
}

}  // namespace foundation::storage::provider::detail
