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

/// The path of `iri` without dot segments, from the root.
std::u16string rootedPath(const IRI& iri, std::u16string_view written) {
  const bool isRooted = written.starts_with(u'/') || !iri.hasAuthority();
  return removeDotSegments((isRooted ? u"" : u"/") + std::u16string(written));
}

/// `target` as seen from `base`, a path that ends in '/' or is empty; both without dot segments.
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
  const auto isRooted = [](const IRI& iri) { return iri.hasAuthority() || iri.writtenPath().starts_with(u'/'); };
  const bool comparable = hasAuthority() == base.hasAuthority() && getScheme() == base.getScheme() &&
                          writtenAuthority() == base.writtenAuthority() && isRooted(*this) && isRooted(base);
  if (!comparable)
    return *this;
  // References are merged with the base's path up to its last '/', even where ".." follows that.
  const auto basePath = base.writtenPath();
  const auto folder = rootedPath(base, basePath.substr(0, basePath.rfind(u'/') + 1));
  IRIArgs args = toArgs();
  args.scheme_ = args.userInfo_ = args.host_ = args.port_ = std::nullopt;
  args.path_ = relativePath(rootedPath(*this, writtenPath()), folder);
  return IRI(args);
}

}  // namespace foundation::network
