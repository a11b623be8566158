#pragma once

#include "laws/Violation.h"

#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <optional>

namespace foundation::laws {

using storage::provider::StorageIRI;

/// The location of `text`, if it is one.
inline std::optional<StorageIRI> located(const std::u16string& text) {
  try {
    return StorageIRI(text);
  } catch (const std::runtime_error&) {  // no IRI, not absolute, or no location in a container
    return std::nullopt;
  }
}

inline bool hasLoneSurrogate(std::u16string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isHigh = (text[at] & 0xFC00) == 0xD800;
    const bool isLow = (text[at] & 0xFC00) == 0xDC00;
    if (isLow || (isHigh && (at + 1 == text.size() || (text[at + 1] & 0xFC00) != 0xDC00)))
      return true;
    at += isHigh ? 1 : 0;
  }
  return false;
}

/// What holds for every location.
inline void checkLocation(const StorageIRI& location) {
  const auto& text = location.toString();
  const StorageIRI again(text);
  require(again == location && location == again, "a text parses to its location", text);
  require(again.toString() == text, "a text is kept as written", text);
  require(again.hashValue() == location.hashValue(), "equal locations of one text have one hash", text);
  require(StorageIRI(location.toAsciiString()) == location, "the ASCII form parses to the location", text);
  require(!(location < again) && !(again < location), "equal locations are not ordered", text);

  require(StorageIRI(location, u"") == location, "the empty child is the location itself", text);
  const auto resolved = location.getResolvedIRI();
  require(resolved.getResolvedIRI() == resolved, "resolving twice changes nothing more", text);
  if (location.hasParent() && location.getPath().find_first_not_of(u'/') != std::u16string::npos) {
    const auto parent = location.getParent();
    require(parent.getPath().size() < location.getPath().size(), "a parent's path is shorter", text);
    require(parent.getScheme() == location.getScheme(), "a parent has the same scheme", text);
  }
  // A '/' at the end is trimmed together with the unit before it, so only paths without one obey this.
  require(!location.isAncestorOf(location) || location.getPath().ends_with(u'/'), "no location is its own ancestor",
          text);
}

/// What holds for every folder and every name in it.
/// @param name  without '/' and NUL, not empty
inline void checkChild(const StorageIRI& folder, const std::u16string& name) {
  const StorageIRI child(folder, name);
  const auto both = folder.toString() + u" and " + name;
  require(child.getName() == name, "a child has its name", both);
  require(StorageIRI(child.toString()) == child, "a child's text parses to it", both);
  if (!hasLoneSurrogate(name))
    require(StorageIRI(child.toString()).getName() == name, "a child's text has its name", both);
  require(StorageIRI(child.getParent(), name) == child, "a child is its parent's child", both);
}

/// Whether a path is the root, or names separated by single '/'.
inline bool isPlainPath(std::u16string_view path) {
  return path == u"/" || (path.starts_with(u'/') && !path.ends_with(u'/') &&
                          path.find(u"//") == std::u16string_view::npos && !hasLoneSurrogate(path));
}

/// A relative path leads from a folder to what it was made for.
inline void checkRelativePath(const StorageIRI& location, const StorageIRI& folder) {
  if (!isPlainPath(location.getPath()) || !isPlainPath(folder.getPath()) || location.isOpaque() != folder.isOpaque() ||
      !(StorageIRI(location, u"/") == StorageIRI(folder, u"/")))
    return;
  const StorageIRI reached(folder, location.makePathRelativeTo(folder));
  const auto withoutEnd = [](std::u16string path) {
    if (path.size() > 1 && path.back() == u'/')
      path.pop_back();
    return path;
  };
  require(withoutEnd(reached.getResolvedPath()) == withoutEnd(location.getResolvedPath()),
          "a relative path leads to its location", location.toString() + u" from " + folder.toString());
}

/// The laws of equality, order and hash for any three locations of one kind.
inline void checkComparison(const StorageIRI& a, const StorageIRI& b, const StorageIRI& c) {
  const auto all = a.toString() + u" | " + b.toString() + u" | " + c.toString();
  require(a == a && !(a < a), "equality is reflexive and the order is not", all);
  require((a == b) == (b == a), "equality is symmetric", all);
  require(!(a == b && b == c) || a == c, "equality is transitive", all);
  require((a == b) == (!(a < b) && !(b < a)), "equality agrees with the order", all);
  require(!(a < b && b < a), "the order is strict", all);
  require(!(a < b && b < c) || a < c, "the order is transitive", all);
  require(!(a == b) || a.getScheme() != b.getScheme() || a.hashValue() == b.hashValue(), "equal locations hash equally",
          all);
}

}  // namespace foundation::laws
