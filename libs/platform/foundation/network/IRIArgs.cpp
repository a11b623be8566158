#include <foundation/network/IRIArgs.h>

#include <foundation/network/detail/Address.h>
#include <foundation/network/detail/PercentEncoding.h>

#include <utility>

namespace foundation::network {
namespace {

std::u16string encoded(const std::u16string& plain, detail::Allowed where) {
  std::u16string out;
  out.reserve(plain.size());
  detail::appendEncoded(out, plain, where);
  return out;
}

IRIArgs::Component encoded(const IRIArgs::Component& plain, detail::Allowed where) {
  return plain ? IRIArgs::Component(encoded(*plain, where)) : std::nullopt;
}

/// What has to stand before a path so that it is read as one.
std::u16string_view pathGuard(std::u16string_view path, bool hasScheme, bool hasAuthority) {
  if (hasAuthority)
    return path.empty() || path.front() == u'/' ? u"" : u"/";
  if (path.starts_with(u"//"))
    return u"/.";
  const auto firstSegment = path.substr(0, path.find(u'/'));
  return !hasScheme && firstSegment.find(u':') != std::u16string_view::npos ? u"./" : u"";
}

}  // namespace

IRIArgs& IRIArgs::setScheme(Component scheme) {
  scheme_ = std::move(scheme);
  return *this;
}

IRIArgs& IRIArgs::setUserInfo(const Component& plain) {
  userInfo_ = encoded(plain, detail::inUserInfo);
  return *this;
}

IRIArgs& IRIArgs::setHost(const Component& plain) {
  const bool isAddress = plain && plain->size() > 2 && plain->front() == u'[' && plain->back() == u']' &&
                         detail::isBracketedAddress(std::u16string_view(*plain).substr(1, plain->size() - 2));
  host_ = isAddress ? plain : encoded(plain, detail::inHost);
  return *this;
}

IRIArgs& IRIArgs::setPort(Component port) {
  port_ = std::move(port);
  return *this;
}

IRIArgs& IRIArgs::setPath(const std::u16string& plain) {
  path_ = encoded(plain, detail::inPath);
  return *this;
}

IRIArgs& IRIArgs::setQuery(const Component& plain) {
  query_ = encoded(plain, detail::inQuery);
  return *this;
}

IRIArgs& IRIArgs::setFragment(const Component& plain) {
  fragment_ = encoded(plain, detail::inFragment);
  return *this;
}

std::u16string IRIArgs::compose() const {
  const bool hasAuthority = host_ || userInfo_ || port_;
  std::u16string text;
  if (scheme_)
    text.append(*scheme_).append(u":");
  if (hasAuthority)
    text.append(u"//");
  if (userInfo_)
    text.append(*userInfo_).append(u"@");
  if (host_)
    text.append(*host_);
  if (port_)
    text.append(u":").append(*port_);
  text.append(pathGuard(path_, scheme_.has_value(), hasAuthority)).append(path_);
  if (query_)
    text.append(u"?").append(*query_);
  if (fragment_)
    text.append(u"#").append(*fragment_);
  return text;
}

}  // namespace foundation::network
