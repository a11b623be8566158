#pragma once

#include <foundation/core/Export.h>

#include <compare>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

/// Paths of the local file system, as texts: nothing here but `get_pathname_from_volume` asks the
/// system. Since locations travel between systems, three absolute forms are known on all of them:
///
/// | form    | example            | root         |
/// |---------|--------------------|--------------|
/// | rooted  | `/a/b`             | `/`          |
/// | drive   | `C:/a`             | `C:/`        |
/// | network | `//server/share/a` | `//server/`  |
///
/// In generic form '/' separates segments. On POSIX systems that is the native form, too, and a
/// backslash is a character like any other. All functions may be called by any number of threads.
namespace fl::filesystem {

/// A path in some form; an immutable value unless assigned to.
///
/// @tparam Native  the unit in which a system with wide file names takes them
/// @tparam Char    the unit of the path's text
template <class Native, class Char>
class basic_path {
 public:
  /// What the template's parameters say.
  /// @{
  using native_type = Native;
  using value_type = Char;
  using string_type = std::basic_string<Char>;
  using view_type = std::basic_string_view<Char>;
  /// @}

  /// The empty path.
  basic_path() = default;
  /// Any text makes a path; what form it has is for the functions below to tell.
  explicit basic_path(string_type text) : text_(std::move(text)) {}

  /// The text, unchanged.
  const string_type& string() const noexcept { return text_; }
  /// Whether the text is empty.
  bool empty() const noexcept { return text_.empty(); }

  /// Equality of the texts, code unit by code unit.
  friend bool operator==(const basic_path& a, const basic_path& b) noexcept {
    return a.text_.size() == b.text_.size() &&
           std::char_traits<char>::compare(reinterpret_cast<const char*>(a.text_.data()),
                                           reinterpret_cast<const char*>(b.text_.data()),
                                           a.text_.size() * sizeof(Char)) == 0;
  }

  /// Segment by segment, each by its unsigned code units; a path comes before those that continue it,
  /// and all rooted paths come before those on a network. Never equal for texts that differ.
  friend std::strong_ordering operator<=>(const basic_path& a, const basic_path& b) noexcept {
    return compareSegments(a.text_, b.text_);
  }

 private:
  static constexpr Char separator = Char('/');

  /// A separator ends a segment, so it ranks below every other unit, but above the end of the path. The
  /// second one of "//server" ends none: it tells that root from "/", which comes first.
  static std::strong_ordering compareSegments(view_type a, view_type b) noexcept {
    std::size_t at = 0;
    while (at < a.size() && at < b.size() && a[at] == b[at])
      ++at;
    return rankAt(a, at) <=> rankAt(b, at);
  }
  static long rankAt(view_type text, std::size_t at) noexcept {
    if (at == text.size())
      return -2;
    if (text[at] != separator)
      return static_cast<long>(static_cast<std::make_unsigned_t<Char>>(text[at]));
    return at == 1 && text[0] == separator ? std::numeric_limits<long>::max() : -1;
  }

  string_type text_;
};

/// The paths that this project works with.
using upath = basic_path<wchar_t, char16_t>;

/// What paths in generic form are made of.
struct upath_constant {
  /// Stands between segments.
  static constexpr std::u16string_view GENERIC_PATHNAME_SEPARATOR = u"/";
};

/// With '/' as the separator. Leading '/' that name no server count as one ("///a" is "/a"; POSIX, XBD
/// section 4.13), and one '/' follows a server.
FOUNDATION_EXPORT upath make_generic_form(const upath& path);

/// With the system's own separator.
FOUNDATION_EXPORT upath make_native_form(const upath& path);

/// How many code units the root of a path in generic form takes; 0 where it has none.
FOUNDATION_EXPORT std::size_t root_length(const upath& path);

/// Whether a path in generic form is of one of the three absolute forms. A bare drive, "C:", is not: it
/// means the folder that the drive happens to be in.
FOUNDATION_EXPORT bool is_absolute(const upath& path);

/// The root, always with its '/' at the end ("//server" gives "//server/", "C:" gives "C:/"); empty
/// where there is none.
FOUNDATION_EXPORT upath extract_root_path(const upath& path);

/// The path without its last segment and without a '/' at the end that is not the root's; empty for a root.
FOUNDATION_EXPORT upath extract_parent_path(const upath& path);

/// The last segment, whether a '/' follows it or not; of a root, "/", the drive or the server.
FOUNDATION_EXPORT upath extract_filename(const upath& path);

/// The canonical form of an absolute path, asked of the file system: links resolved, dots gone
/// (realpath(3)).
/// @param path  rooted, of an entry that exists
/// @throws AccessDenied     a folder on the way may not be searched
/// @throws PathNotFound     nothing is there, or the way leads through a file
/// @throws InvalidArgument  the path is of another form, holds a NUL, is too long or leads into a loop of links
/// @throws SystemError      any other failure
FOUNDATION_EXPORT upath get_pathname_from_volume(const upath& path);

}  // namespace fl::filesystem
