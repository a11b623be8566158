#include <foundation/network/IRI.h>

#include <foundation/network/IRISyntaxException.h>
#include <foundation/network/detail/Parser.h>
#include <foundation/network/detail/PercentEncoding.h>

#include <algorithm>

namespace foundation::network {

IRI::IRI(std::u16string text) : text_(std::move(text)), parts_(detail::parse(text_)) {}

IRI::IRI(const IRIArgs& args) : IRI(args.compose()) {
  // Setters escape, but schemes, ports and bracketed hosts are taken as given: they must have been
  // read back as what they were set as.
  const auto port = args.port_ ? *args.port_ : std::u16string();
  const auto host = args.host_ ? *args.host_ : std::u16string();
  const bool sameScheme = args.scheme_ ? getScheme() == *args.scheme_ && isAbsolute() : !isAbsolute();
  if (!sameScheme || getPort() != port || getHost(IRIEncoding::Display) != host)
    throw IRISyntaxException(text_, 0, "its scheme, host or port would be read as something else");
}

bool IRI::isScheme(std::u16string_view text) noexcept {
  const auto allowed = [](char16_t unit) { return detail::isAllowedAscii(unit, detail::inScheme); };
  return !text.empty() && detail::isAsciiLetter(text.front()) && std::all_of(text.begin(), text.end(), allowed);
}

std::u16string IRI::decode(std::u16string_view written) { return detail::decoded(written); }

bool IRI::isOpaque() const noexcept {
  const auto begin = schemeSpecificBegin();
  return isAbsolute() && (begin == text_.size() || text_[begin] != u'/');
}

bool IRI::hasUserInfo() const noexcept { return writtenHostAndPort().size() != writtenAuthority().size(); }

bool IRI::hasPort() const noexcept { return writtenHost().size() != writtenHostAndPort().size(); }

std::u16string IRI::getScheme() const { return isAbsolute() ? text_.substr(0, text_.find(u':')) : std::u16string(); }

std::u16string IRI::getUserInfo(IRIEncoding encoding) const {
  const auto authority = writtenAuthority();
  return hasUserInfo() ? inEncoding(authority.substr(0, authority.rfind(u'@')), encoding) : std::u16string();
}

std::u16string IRI::getHost(IRIEncoding encoding) const { return inEncoding(writtenHost(), encoding); }

std::u16string IRI::getPort() const {
  return hasPort() ? std::u16string(writtenHostAndPort().substr(writtenHost().size() + 1)) : std::u16string();
}

std::u16string IRI::getPath(IRIEncoding encoding) const { return inEncoding(writtenPath(), encoding); }

std::u16string IRI::getQuery(IRIEncoding encoding) const { return inEncoding(writtenQuery(), encoding); }

std::u16string IRI::getFragment(IRIEncoding encoding) const { return inEncoding(writtenFragment(), encoding); }

std::u16string IRI::getAuthority(IRIEncoding encoding) const { return inEncoding(writtenAuthority(), encoding); }

std::u16string IRI::getSchemeSpecificPart(IRIEncoding encoding) const {
  return inEncoding(between(schemeSpecificBegin(), text_.size()), encoding);
}

IRIArgs IRI::toArgs() const {
  IRIArgs args;
  if (isAbsolute())
    args.scheme_ = getScheme();
  if (hasUserInfo())
    args.userInfo_ = getUserInfo(IRIEncoding::Display);
  if (hasHost())
    args.host_ = getHost(IRIEncoding::Display);
  if (hasPort())
    args.port_ = getPort();
  args.path_ = writtenPath();
  if (hasQuery())
    args.query_ = getQuery(IRIEncoding::Display);
  if (hasFragment())
    args.fragment_ = getFragment(IRIEncoding::Display);
  return args;
}

IRI IRI::withPath(std::u16string_view plain) const {
  if (parts_.hasAuthority)
    return withPathAfter({}, !plain.empty() && plain.front() != u'/', plain);
  IRI iri(toArgs().setPath(std::u16string(plain)));
  std::u16string encoded;
  iri.parts_.pathIsLossy = detail::appendEncoded(encoded, plain, detail::inPath).hasLoneSurrogate;
  return iri;
}

IRI IRI::withChild(std::u16string_view plain) const {
  if (parts_.hasAuthority && parts_.pathIsCanonical)
    return withPathAfter(writtenPath(), !writtenPath().ends_with(u'/'), plain);
  const auto folder = getPath();
  return withPath(folder + (folder.ends_with(u'/') ? u"" : u"/") + std::u16string(plain));
}

/// This IRI with the path `kept` (as it is written), '/' if it is to be `separated`, and `plain`.
IRI IRI::withPathAfter(std::u16string_view kept, bool separated, std::u16string_view plain) const {
  const auto rest = between(parts_.pathEnd, text_.size());
  std::u16string text;
  text.reserve(parts_.pathBegin + kept.size() + 1 + plain.size() + rest.size());
  text.append(text_, 0, parts_.pathBegin).append(kept);
  if (separated)
    text.push_back(u'/');
  const auto notes = detail::appendEncoded(text, plain, detail::inPath);
  const auto pathEnd = text.size();
  text.append(rest);
  if (text.size() > detail::maximalLength)
    throw IRISyntaxException(text, detail::maximalLength, "the text is too long");

  auto parts = parts_;
  parts.pathEnd = pathEnd & detail::maximalLength;
  parts.pathHasEscapes = notes.hasEscapes || (!kept.empty() && parts_.pathHasEscapes);
  parts.pathIsCanonical = !notes.hasLoneSurrogate;
  parts.pathIsLossy = notes.hasLoneSurrogate;
  // Whatever else the text holds was there before; only a path that is replaced may have been the reason.
  const auto isAscii = [](char16_t unit) { return unit < 0x80; };
  parts.isAscii = notes.isAscii && (parts_.isAscii || std::all_of(text.begin(), text.end(), isAscii));
  return IRI(std::move(text), parts);
}

std::u16string IRI::inEncoding(std::u16string_view written, IRIEncoding encoding) const {
  switch (encoding) {
    case IRIEncoding::Ascii:
      return parts_.isAscii ? std::u16string(written) : detail::asciiForm(written);
    case IRIEncoding::Decoded:
      return detail::decoded(written);
    case IRIEncoding::Display:
      break;
  }
  return std::u16string(written);
}

std::size_t IRI::queryEnd() const noexcept { return std::min(text_.find(u'#', parts_.pathEnd), text_.size()); }

std::u16string_view IRI::writtenAuthority() const noexcept {
  return parts_.hasAuthority ? between(schemeSpecificBegin() + 2, parts_.pathBegin) : std::u16string_view();
}

std::u16string_view IRI::writtenHostAndPort() const noexcept {
  const auto authority = writtenAuthority();
  return authority.substr(authority.rfind(u'@') + 1);  // from the beginning where there is none
}

std::u16string_view IRI::writtenHost() const noexcept {
  const auto all = writtenHostAndPort();
  return all.substr(0, all.find(u':', all.starts_with(u'[') ? all.find(u']') : 0));
}

std::u16string_view IRI::writtenQuery() const noexcept {
  return hasQuery() ? between(parts_.pathEnd + 1, queryEnd()) : std::u16string_view();
}

std::u16string_view IRI::writtenFragment() const noexcept {
  return hasFragment() ? between(queryEnd() + 1, text_.size()) : std::u16string_view();
}

}  // namespace foundation::network
