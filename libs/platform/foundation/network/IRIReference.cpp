// Relative references: what they mean against a base, and how to make them.

#include <foundation/network/DotSegments.h>
#include <foundation/network/IRI.h>

namespace foundation::network {
namespace {

/// RFC 3986, section 5.2.3.
std::u16string merged(const IRI& base, std::u16string_view path) {
  const auto basePath = base.writtenPath();
  if (base.hasAuthority() && basePath.empty())
    return u"/" + std::u16string(path);
  return std::u16string(basePath.substr(0, basePath.rfind(u'/') + 1)).append(path);
}

/// `target` as seen from the folder that `base` is in; both absolute and without dot segments.
std::u16string relativePath(std::u16string_view target, std::u16string_view base) {
  std::size_t common = 0;  // just past the last '/' that both share
  for (std::size_t i = 0; i < target.size() && i < base.size() && target[i] == base[i]; ++i)
    if (target[i] == u'/')
      common = i + 1;
  std::u16string out;
  for (const char16_t unit : base.substr(common))
    if (unit == u'/')
      out.append(u"../");
  const auto rest = target.substr(common);
  // An empty reference would mean the base itself, and one that begins with '/' the root.
  if (out.empty() && (rest.empty() || rest.front() == u'/'))
    out.append(u"./");
  return out.append(rest);
}

}  // namespace

IRI IRI::resolve(const IRI& reference) const {
  IRIArgs args = reference.toArgs();
  if (!reference.isAbsolute()) {
    const IRIArgs base = toArgs();
    args.scheme_ = base.scheme_;
    if (!reference.hasAuthority()) {
      args.userInfo_ = base.userInfo_;
      args.host_ = base.host_;
      args.port_ = base.port_;
      if (args.path_.empty()) {
        args.path_ = base.path_;
        args.query_ = reference.hasQuery() ? args.query_ : base.query_;
        return IRI(args);
      }
      if (args.path_.front() != u'/')
        args.path_ = merged(*this, args.path_);
    }
  }
  args.path_ = removeDotSegments(args.path_);
  return IRI(args);
}

IRI IRI::makeRelativeTo(const IRI& base) const {
  const bool comparable = !isOpaque() && !base.isOpaque() && hasAuthority() == base.hasAuthority() &&
                          getScheme() == base.getScheme() && writtenAuthority() == base.writtenAuthority();
  if (!comparable)
    return *this;
  const auto rooted = [](const IRI& iri) {
    const bool isRooted = iri.writtenPath().starts_with(u'/') || !iri.hasAuthority();
    return removeDotSegments((isRooted ? u"" : u"/") + std::u16string(iri.writtenPath()));
  };
  IRIArgs args = toArgs();
  args.scheme_ = args.userInfo_ = args.host_ = args.port_ = std::nullopt;
  args.path_ = relativePath(rooted(*this), rooted(base));
  return IRI(args);
}

}  // namespace foundation::network
