#pragma once

#include <foundation/core/Export.h>
#include <foundation/network/IRIArgs.h>
#include <foundation/network/detail/Parts.h>

#include <string>
#include <string_view>

/// Internationalised resource identifiers (RFC 3987).
namespace foundation::network {

/// The form in which a text of an IRI is asked for.
enum class IRIEncoding {
  Display = 0,  ///< as written; non-ASCII characters stay visible
  Ascii = 1,    ///< as written, every non-ASCII character as percent-encoded UTF-8
  Decoded = 2,  ///< every percent-escape decoded once: plain text, for single components
};

/// An internationalised resource identifier (RFC 3987), or a relative reference, over UTF-16.
///
/// The text is kept as it was written: nothing is folded, resolved or escaped anew. It is checked
/// against the grammar when it is made; offsets of its components are kept beside it.
///
///     IRI iri(u"http://example.org:8080/a%20b?x=1#top");
///     iri.getPath();                        // u"/a b"
///     iri.getPath(IRIEncoding::Display);    // u"/a%20b"
///
/// In the decoded form, escaped bytes that are no UTF-8 come out as the lone surrogates U+DC80-U+DCFF
/// (see fl::i18n), so a decoded path can name any file. Decoding a text of several components
/// (authority, scheme-specific part, the whole) loses where they ended; their default is `Display`.
///
/// An immutable value. Any number of threads may read one; one that was moved from may only be destroyed or
/// assigned to.
class FOUNDATION_EXPORT IRI {
 public:
  /// Throws `IRISyntaxException` where `text` is neither an IRI nor a relative reference, or has more than 2^29 - 1
  /// code units. The empty text is a relative reference.
  explicit IRI(std::u16string text);

  /// Throws `IRISyntaxException` where the components do not make an IRI, or one that is too long.
  explicit IRI(const IRIArgs& args);

  /// Whether `text` can be a scheme: a letter, then letters, digits, '+', '-' and '.' (RFC 3986, section 3.1).
  static bool isScheme(std::u16string_view text) noexcept;

  /// Every percent-escape of a component as it is written, decoded once; a '%' without two hexadecimal
  /// digits after it is kept.
  static std::u16string decode(std::u16string_view written);

  /// Whether it has a scheme. (RFC 3986 calls this "not a relative reference".)
  bool isAbsolute() const noexcept { return parts_.hasScheme; }

  /// Whether something else than "/" follows the scheme, or nothing at all.
  bool isOpaque() const noexcept;

  /// Whether the component is there. It may be empty: "//@:/?#" has all of them. A host comes with every authority.
  /// @{
  bool hasAuthority() const noexcept { return parts_.hasAuthority; }
  bool hasUserInfo() const noexcept;
  bool hasHost() const noexcept { return parts_.hasAuthority; }
  bool hasPort() const noexcept;
  bool hasQuery() const noexcept { return parts_.pathEnd < text_.size() && text_[parts_.pathEnd] == u'?'; }
  bool hasFragment() const noexcept { return queryEnd() < text_.size(); }
  /// @}

  /// The component without its delimiters; the empty text where it is absent. A host in brackets is given with them.
  /// @{
  std::u16string getScheme() const;
  std::u16string getUserInfo(IRIEncoding encoding = IRIEncoding::Decoded) const;
  std::u16string getHost(IRIEncoding encoding = IRIEncoding::Decoded) const;
  std::u16string getPort() const;
  std::u16string getPath(IRIEncoding encoding = IRIEncoding::Decoded) const;
  std::u16string getQuery(IRIEncoding encoding = IRIEncoding::Decoded) const;
  std::u16string getFragment(IRIEncoding encoding = IRIEncoding::Decoded) const;
  /// @}

  /// User information, host and port with the delimiters between them; the empty text where there is no authority.
  std::u16string getAuthority(IRIEncoding encoding = IRIEncoding::Display) const;

  /// All that follows the scheme and its ':' (the whole text where there is no scheme).
  std::u16string getSchemeSpecificPart(IRIEncoding encoding = IRIEncoding::Display) const;

  /// The whole text.
  /// @{
  std::u16string toString(IRIEncoding encoding = IRIEncoding::Display) const { return inEncoding(text_, encoding); }
  std::u16string toAsciiString() const { return toString(IRIEncoding::Ascii); }
  /// @}

  /// The text in display form, without a copy; valid as long as this object.
  const std::u16string& text() const noexcept { return text_; }

  /// Whether the display form is the ASCII form.
  bool isAscii() const noexcept { return parts_.isAscii; }

  /// The host as it stands in `text()`.
  std::u16string_view writtenHost() const noexcept;

  /// The path as it stands in `text()`.
  std::u16string_view writtenPath() const noexcept { return between(parts_.pathBegin, parts_.pathEnd); }

  /// Whether the path holds percent-escapes; without them it is its own decoded form.
  bool pathHasEscapes() const noexcept { return parts_.pathHasEscapes; }

  /// The components, which make the same IRI again.
  IRIArgs toArgs() const;

  /// The same IRI with another path, as `toArgs()`, `IRIArgs::setPath()` and back, in one step.
  /// @param plain  decoded; made absolute by a '/' where there is an authority
  /// @throws IRISyntaxException  the IRI would get too long
  IRI withPath(std::u16string_view plain) const;

  /// The same IRI with its path continued by '/' (unless it ends in one) and `plain`: what `withPath`
  /// makes of the two, without decoding and encoding the path that is there. Throws as `withPath`.
  IRI withChild(std::u16string_view plain) const;

  /// Whether `withPath` or `withChild` was given lone surrogates, so that `getPath()` need not be the
  /// path that was asked for (though it stands for the same bytes).
  bool pathIsLossy() const noexcept { return parts_.pathIsLossy; }

  /// What `reference` means where this IRI is the base (RFC 3986, section 5.2, strictly). Throws
  /// `IRISyntaxException` where that would get too long.
  IRI resolve(const IRI& reference) const;

  /// A relative reference that resolves against `base` to this IRI with dot segments removed (an empty
  /// path under an authority counts as "/"). This IRI itself where schemes or authorities differ, or
  /// where either path is not rooted. The path is given relative to the folder that
  /// `base` is in: up to and including the last '/' of its path.
  IRI makeRelativeTo(const IRI& base) const;

  /// Equality of the texts as they were written: `a:%41` and `a:A` differ.
  friend bool operator==(const IRI& a, const IRI& b) noexcept { return a.text_ == b.text_; }

 private:
  IRI(std::u16string text, const detail::Parts& parts) : text_(std::move(text)), parts_(parts) {}

  IRI withPathAfter(std::u16string_view kept, bool separated, std::u16string_view plain) const;
  std::u16string inEncoding(std::u16string_view written, IRIEncoding encoding) const;

  // The written components, without their delimiters; empty where they are absent.
  std::u16string_view between(std::size_t begin, std::size_t end) const noexcept {
    return std::u16string_view(text_).substr(begin, end - begin);
  }
  std::size_t schemeSpecificBegin() const noexcept { return isAbsolute() ? text_.find(u':') + 1 : 0; }
  std::size_t queryEnd() const noexcept;
  std::u16string_view writtenAuthority() const noexcept;
  std::u16string_view writtenHostAndPort() const noexcept;
  std::u16string_view writtenQuery() const noexcept;
  std::u16string_view writtenFragment() const noexcept;

  std::u16string text_;
  detail::Parts parts_;
};

}  // namespace foundation::network
