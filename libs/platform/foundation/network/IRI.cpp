#include <foundation/network/IRI.h>
#include <foundation/network/IRISyntaxException.h>
#include <foundation/network/detail/Parser.h>
#include <foundation/network/detail/PercentEncoding.h>

#include <algorithm>
#include <limits>

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

bool IRI::hasUserInfo() const noexcept { return parts_.hasAuthority && parts_.hostBegin != schemeSpecificBegin() + 2; }

bool IRI::hasPort() const noexcept { return parts_.hasAuthority && parts_.hostEnd != parts_.pathBegin; }

std::u16string IRI::getScheme() const { return text_.substr(0, parts_.schemeEnd); }

std::u16string IRI::getUserInfo(IRIEncoding encoding) const {
  if (!hasUserInfo())
    return {};
  return inEncoding(between(schemeSpecificBegin() + 2, parts_.hostBegin - 1), encoding);
}

std::u16string IRI::getHost(IRIEncoding encoding) const {
  return inEncoding(between(parts_.hostBegin, parts_.hostEnd), encoding);
}

std::u16string IRI::getPort() const {
  return hasPort() ? std::u16string(between(parts_.hostEnd + 1, parts_.pathBegin)) : std::u16string();
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
  if (!parts_.hasAuthority)
    return IRI(toArgs().setPath(std::u16string(plain)));
  const auto rest = between(parts_.pathEnd, text_.size());
  std::u16string text;
  text.reserve(parts_.pathBegin + plain.size() + 1 + rest.size());
  text.append(text_, 0, parts_.pathBegin);
  if (!plain.empty() && plain.front() != u'/')
    text.push_back(u'/');
  detail::appendEncoded(text, plain, detail::inPath);
  const auto pathEnd = text.size();
  text.append(rest);
  if (text.size() > std::numeric_limits<std::uint32_t>::max())
    throw IRISyntaxException(text, std::numeric_limits<std::uint32_t>::max(), "the text is too long");

  auto parts = parts_;
  const auto path = std::u16string_view(text).substr(parts.pathBegin, pathEnd - parts.pathBegin);
  parts.pathEnd = static_cast<std::uint32_t>(pathEnd);
  parts.queryEnd = static_cast<std::uint32_t>(pathEnd + (parts_.queryEnd - parts_.pathEnd));
  parts.pathHasEscapes = path.find(u'%') != std::u16string_view::npos;
  parts.isAscii = std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
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

std::u16string_view IRI::writtenAuthority() const noexcept {
  return parts_.hasAuthority ? between(schemeSpecificBegin() + 2, parts_.pathBegin) : std::u16string_view();
}

std::u16string_view IRI::writtenQuery() const noexcept {
  return hasQuery() ? between(parts_.pathEnd + 1u, parts_.queryEnd) : std::u16string_view();
}

std::u16string_view IRI::writtenFragment() const noexcept {
  return hasFragment() ? between(parts_.queryEnd + 1u, text_.size()) : std::u16string_view();
}

}  // namespace foundation::network
