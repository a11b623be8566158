#pragma once

#include "laws/Violation.h"

#include <fl/filesystem/Path.h>

namespace foundation::laws {

/// What holds for every path of the local file system.
inline void checkPath(const fl::filesystem::upath& path) {
  namespace fs = fl::filesystem;
  const auto& text = path.string();
  const auto generic = fs::make_generic_form(path);
  require(fs::make_generic_form(generic) == generic, "the generic form is its own generic form", text);
  require(fs::make_generic_form(fs::make_native_form(generic)) == generic, "the native form leads back", text);

  const auto root = fs::extract_root_path(generic);
  require(fs::extract_root_path(root) == root, "a root is its own root", text);
  require(fs::is_absolute(generic) == (fs::root_length(generic) > 0 && generic.string().starts_with(root.string())),
          "an absolute path begins with its root", text);

  // Going up ends, shortens the path each time, and stays under the root.
  for (auto at = generic; !at.empty();) {
    const auto parent = fs::extract_parent_path(at);
    require(parent.string().size() < at.string().size(), "a parent is shorter", text);
    require(parent.empty() || fs::extract_root_path(parent) == root, "a parent has the same root", text);
    require(fs::extract_filename(at).string().find(u'/') == std::u16string::npos ||
                fs::extract_filename(at).string() == u"/",
            "a name holds no separator", text);
    at = parent;
  }
}

/// The order of any three paths is strict, total and agrees with equality.
inline void checkPathOrder(const fl::filesystem::upath& a, const fl::filesystem::upath& b,
                           const fl::filesystem::upath& c) {
  const auto all = a.string() + u" | " + b.string() + u" | " + c.string();
  require(((a <=> b) == 0) == (a == b), "the order agrees with equality", all);
  require((a < b) == (b > a) && !(a < b && b < a), "the order is strict", all);
  require(!(a < b && b < c) || a < c, "the order is transitive", all);
}

}  // namespace foundation::laws
