#pragma once

#include <foundation/core/Export.h>

#include <optional>
#include <string>

namespace foundation::network {

/// The components of an IRI, to be changed one by one and made into an IRI again:
///
///     auto args = iri.toArgs();
///     args.setPath(u"/a b");           // plain text: what needs escaping is escaped
///     IRI moved(args);                 // .../a%20b
///
/// Components are held as they are written in an IRI's text. The setters take plain text and escape
/// it, so nothing that is set can spill over into another component; a '%' is taken for itself. An
/// absent component and an empty one differ: an empty host still writes "//".
class FOUNDATION_EXPORT IRIArgs {
 public:
  /// A component that may be absent.
  using Component = std::optional<std::u16string>;

  /// The component as it is written: escapes are not decoded, and delimiters are left out.
  /// @{
  const Component& getScheme() const noexcept { return scheme_; }
  const Component& getUserInfo() const noexcept { return userInfo_; }
  const Component& getHost() const noexcept { return host_; }
  const Component& getPort() const noexcept { return port_; }
  const std::u16string& getPath() const noexcept { return path_; }
  const Component& getQuery() const noexcept { return query_; }
  const Component& getFragment() const noexcept { return fragment_; }
  /// @}

  /// Replaces the component, or takes it away. A scheme and a port are not escaped: the constructor of `IRI` refuses
  /// what is no scheme (RFC 3986, section 3.1), and a port of anything but digits. In a host, an address in brackets
  /// stays as it is.
  /// @{
  IRIArgs& setScheme(Component scheme);
  IRIArgs& setUserInfo(const Component& plain);
  IRIArgs& setHost(const Component& plain);
  IRIArgs& setPort(Component port);
  IRIArgs& setPath(const std::u16string& plain);
  IRIArgs& setQuery(const Component& plain);
  IRIArgs& setFragment(const Component& plain);
  /// @}

 private:
  friend class IRI;

  /// The text of all components put together (RFC 3986, section 5.3). Where a path could be taken for
  /// something else, the least is put before it that keeps it a path: "/" between an authority and a
  /// path without one, "/." before "//" without an authority, "./" before a first segment with a ':'.
  std::u16string compose() const;

  Component scheme_;
  Component userInfo_;
  Component host_;
  Component port_;
  std::u16string path_;
  Component query_;
  Component fragment_;
};

}  // namespace foundation::network
