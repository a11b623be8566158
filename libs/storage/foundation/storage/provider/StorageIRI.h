#pragma once

#include <fl/filesystem/Path.h>
#include <foundation/core/Export.h>
#include <foundation/network/IRI.h>
#include <foundation/storage/provider/PathView.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>

namespace foundation::storage::provider {

namespace detail {
class StorageIRIImpl;
}

/// The name of a place in any store: a file or folder on disk, an object behind a scheme and a host,
/// an entry inside an archive that itself lives at another location.
///
///     StorageIRI folder(u"file:///home/ann");
///     StorageIRI letter(folder, u"100% sure.txt");   // file:///home/ann/100%25%20sure.txt
///     letter.getName();                              // u"100% sure.txt"
///
/// There are three kinds, told apart when a location is made:
/// - hierarchical, `scheme://authority/path`; `scheme:/path` means the same as `scheme:///path`;
/// - in a container, `scheme:INNER!/path`, where INNER is the text of another location, of any kind
///   (the last "!" counts; one in the name of an entry is written `%21`);
/// - a local path under a scheme, made by `toStorageIRI` only.
///
/// **Names.** Paths and names are plain text in UTF-16. In a location's text everything that could be
/// mistaken is percent-escaped, and each byte of a name that is no UTF-8 is a lone surrogate
/// U+DC80-U+DCFF here and `%80`-`%FF` there. So any name goes into a location and comes out unchanged.
/// Texts are kept as they were written: no case folding, no removal of dot segments, no re-escaping.
///
/// **Value.** Immutable and cheap to copy: copies share one implementation, whose texts, name, parent,
/// root and hash are computed on first use and kept; references that accessors return live as long as
/// any copy. Any number of threads may use one location. A moved-from location may only be destroyed
/// or assigned to.
class FOUNDATION_EXPORT StorageIRI {
 public:
  /// Parses `iri`, an absolute IRI (RFC 3987) in UTF-16.
  /// @throws network::IRISyntaxException  it is no IRI
  /// @throws std::runtime_error           (an `IException`, too) it has no scheme, or is of the form scheme:text
  /// without
  ///                                      being a location in at most 64 containers
  explicit StorageIRI(std::u16string iri);

  /// The same from a parsed IRI.
  explicit StorageIRI(network::IRI iri);

  /// The location of `child` relative to `parent`.
  /// @param child  a name or a path, not escaped. One that begins with '/' replaces the parent's
  ///               path (leading '/' count as one); any other is appended to it, less one trailing '/'.
  ///               The empty child is the parent itself. "." and ".." are kept. A query or fragment of
  ///               a hierarchical parent is kept, that of one in a container is dropped.
  StorageIRI(const StorageIRI& parent, const std::u16string& child);

  /// A location inside a container.
  /// @param scheme  of the container, such as u"zip"
  /// @param inner   where the container lives
  /// @param path    inside the container, absolute, not escaped
  /// @throws network::IRISyntaxException  `scheme` is no scheme
  /// @throws std::runtime_error           (an `IException`, too) `inner` has no path or lies in 64 containers
  StorageIRI(const std::u16string& scheme, const StorageIRI& inner, std::u16string path);

  StorageIRI(const StorageIRI&) = default;
  StorageIRI(StorageIRI&&) noexcept = default;
  StorageIRI& operator=(const StorageIRI&) = default;
  StorageIRI& operator=(StorageIRI&&) noexcept = default;
  ~StorageIRI() = default;

  /// As it was written, without the ':'; that of a location in a container is the container's.
  std::u16string getScheme() const;

  /// Decoded. Throws `std::logic_error` for a location in a container, which has none.
  std::u16string getHost() const;
  /// Whether there is a host that is not empty; never throws.
  bool hasHost() const;

  /// Decoded; of a location in a container, the path inside it.
  const std::u16string& getPath() const;
  /// Whether the path is not empty.
  bool hasPath() const;
  /// A view over `getPath()`, valid while a copy of this location lives.
  PathView getPathView() const;
  /// The last segment of the path, without a '/' after it; "/" for the root.
  const std::u16string& getName() const;

  /// The folder that holds this location, inside the same container. A hierarchical or container
  /// parent's path keeps its trailing '/'. Throws a `std::logic_error` (an `IException`, too) where there
  /// is none: for the root, and for a location without a path. A drive's root, "C:/", has no parent by
  /// `hasParent()`, but gives "/", under which all drives hang.
  StorageIRI getParent() const;
  /// False at the root.
  bool hasParent() const;

  /// The location of the container. Throws a `std::logic_error` (an `IException`, too) unless `hasInnerIRI()`.
  StorageIRI getInnerIRI() const;
  /// Whether this is a location in a container.
  /// @{
  bool hasInnerIRI() const;
  bool isOpaque() const;
  /// @}

  /// The text, as written; non-ASCII characters stay visible.
  const std::u16string& toString() const;
  /// The text with every non-ASCII character as percent-encoded UTF-8.
  const std::u16string& toAsciiString() const;
  /// The parsed form of `toString()`.
  network::IRI toIRI() const;

  /// The path for the local file system, in native form; a host makes it a network path
  /// (`//host/path`), and a drive under the root (`/C:/a`) a drive path (`C:/a`). The scheme is not
  /// looked at. Throws `std::logic_error` for a location in a container.
  fl::filesystem::upath toUPath() const;

  /// The path with "." and ".." resolved, as far as the text says; links are not looked at.
  const std::u16string& getResolvedPath() const;
  /// This location with that path, under the same root.
  StorageIRI getResolvedIRI() const;

  /// Whether `other` lies strictly below this location, as far as the texts say: same scheme, same
  /// container, a path that begins with this one. Hosts are not compared, and dot segments not
  /// resolved. A path that ends in '/' is taken as `PathView` trims it.
  bool isAncestorOf(const StorageIRI& other) const;

  /// The path from the folder `base` to this location, not escaped. It may begin with "../", or with "./"
  /// before a name with a ':'; the child that it makes of `base` has to be resolved. Dot segments of either
  /// path are resolved, and lone surrogates in names come back as their bytes are read.
  /// Throws `std::runtime_error` where the two have different roots.
  std::u16string makePathRelativeTo(const StorageIRI& base) const;

  /// Computed once from the ASCII text; the same in every process and every release.
  std::uint64_t hashValue() const;

  /// Equality of the ASCII texts; two local paths are equal where their paths are, whatever their
  /// schemes. The two rules together are not transitive: local paths made with the schemes a and b are
  /// equal to each other, but only one of them to the location parsed from an "a:" text. Do not mix
  /// local paths under different schemes with parsed locations in one container.
  bool operator==(const StorageIRI& other) const;

  /// The order of the ASCII texts by unsigned code units; between two local paths, of their paths
  /// segment by segment. A strict weak order within each kind; see `operator==` for mixtures.
  bool operator<(const StorageIRI& other) const;

  /// Swaps the values; no location is copied, and references from accessors stay valid.
  friend void swap(StorageIRI& a, StorageIRI& b) noexcept { a.impl_.swap(b.impl_); }

 private:
  friend class detail::StorageIRIImpl;
  friend FOUNDATION_EXPORT StorageIRI toStorageIRI(const std::u16string&, const fl::filesystem::upath&);

  StorageIRI() noexcept = default;
  explicit StorageIRI(std::shared_ptr<const detail::StorageIRIImpl> impl) noexcept;
  /// A local path; `path` in generic form.
  StorageIRI(std::u16string scheme, fl::filesystem::upath path);

  std::shared_ptr<const detail::StorageIRIImpl> impl_;
};

/// For `boost::hash` and the containers that use it.
FOUNDATION_EXPORT std::size_t hash_value(const StorageIRI& location);

/// Writes `location.toString()` in UTF-8.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const StorageIRI& location);

}  // namespace foundation::storage::provider

/// For `std::unordered_map` and the like.
template <>
struct std::hash<foundation::storage::provider::StorageIRI> {
  /// `location.hashValue()`.
  std::size_t operator()(const foundation::storage::provider::StorageIRI& location) const {
    return location.hashValue();
  }
};
