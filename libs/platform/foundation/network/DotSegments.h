#pragma once

#include <foundation/core/Export.h>

#include <string>
#include <string_view>

namespace foundation::network {

/// `path` with its "." and ".." segments resolved (RFC 3986, section 5.2.4): "/a/./b/../c" becomes
/// "/a/c". A ".." at the root stays at the root, empty segments count as segments, and a path that
/// ends in a dot segment ends in '/'. What is left of a rootless path once ".." has taken its first
/// segment away is rooted: "a/../b" becomes "/b".
/// @param path  as it is written, or decoded: an escaped dot, `%2E`, is none
FOUNDATION_EXPORT std::u16string removeDotSegments(std::u16string_view path);

}  // namespace foundation::network
