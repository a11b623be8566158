#pragma once

#include "laws/Violation.h"

#include <foundation/network/DotSegments.h>
#include <foundation/network/IRI.h>
#include <foundation/network/IRISyntaxException.h>

#include <algorithm>
#include <optional>

namespace foundation::laws {

/// The IRI of `text`, if it is one; a refusal has to point into the text.
inline std::optional<network::IRI> parsed(const std::u16string& text) {
  try {
    return network::IRI(text);
  } catch (const network::IRISyntaxException& refusal) {
    require(refusal.getText() == text && refusal.getOffset() <= text.size(), "a refusal points into its text", text);
    return std::nullopt;
  }
}

/// What holds for every IRI.
inline void checkIRI(const network::IRI& iri) {
  using network::IRI;
  using network::IRIArgs;
  using network::IRIEncoding;
  const auto& text = iri.text();

  const IRI ascii(iri.toAsciiString());
  require(ascii.isAscii(), "the ASCII form is ASCII", text);
  require(ascii.getPath() == iri.getPath(), "the ASCII form has the same path", text);
  require(iri.isAscii() == (iri.toAsciiString() == text), "an ASCII text is its own ASCII form", text);

  const auto scheme = iri.isAbsolute() ? iri.getScheme() + u":" : std::u16string();
  require(scheme + iri.getSchemeSpecificPart() == text, "scheme and the rest make the text", text);
  auto rest = iri.hasAuthority() ? u"//" + iri.getAuthority() : std::u16string();
  rest += iri.getPath(IRIEncoding::Display);
  rest += iri.hasQuery() ? u"?" + iri.getQuery(IRIEncoding::Display) : u"";
  rest += iri.hasFragment() ? u"#" + iri.getFragment(IRIEncoding::Display) : u"";
  require(scheme + rest == text, "the components make the text", text);
  require(IRI(iri.toArgs()).text() == text, "the arguments make the text", text);

  // Decoding and encoding again may change the spelling, but not what is spelt; without an authority
  // something may have to stand before the path.
  const auto path = iri.getPath();
  require(!iri.hasAuthority() || iri.withPath(path).getPath() == path, "a decoded path comes back", text);
  require(!iri.hasAuthority() || IRI(iri.toArgs().setPath(path)) == iri.withPath(path), "both ways to set a path agree",
          text);
}

/// What holds for every pair: a reference from one to the other leads there.
inline void checkReference(const network::IRI& target, const network::IRI& base) {
  if (!base.isAbsolute() || base.isOpaque() || target.isOpaque())
    return;
  const auto reference = target.makeRelativeTo(base);
  const auto expected = base.resolve(target);
  const auto reached = base.resolve(reference);
  const bool rootIsImplied = expected.hasAuthority() && expected.getPath().empty() && reached.getPath() == u"/";
  require(rootIsImplied || reached.getPath() == expected.getPath(), "a reference leads to its target",
          target.text() + u" from " + base.text());
  require(reached.getAuthority() == expected.getAuthority(), "a reference stays with its authority",
          target.text() + u" from " + base.text());
}

/// What holds for every path.
inline void checkDotSegments(std::u16string_view path) {
  const auto once = network::removeDotSegments(path);
  require(network::removeDotSegments(once) == once, "removing dot segments twice changes nothing more", path);
  require(!path.starts_with(u'/') || once.starts_with(u'/'), "a rooted path stays rooted", path);
}

}  // namespace foundation::laws
