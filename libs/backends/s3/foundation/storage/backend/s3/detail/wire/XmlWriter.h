#pragma once

#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::wire {

/// "<name>text</name>", with everything escaped that would not come back as it is: markup, and characters below U+0020,
/// of which a reader turns line ends into others.
/// @param text  see `canBeInXml`
std::string element(std::string_view name, std::string_view text);

/// How a document of the protocol begins, up to its root's first child.
std::string rootTag(std::string_view name);

}  // namespace foundation::storage::backend::s3::detail::wire
