#include <foundation/storage/backend/local/detail/NativePath.h>

#include <fl/i18n/Case.h>
#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/provider/LocalPath.h>

#include <utility>

namespace foundation::storage::backend::local::detail {

using provider::ErrorCode;
using provider::StorageIRI;

namespace {

/// Schemes are the same in upper and lower case (RFC 3986, section 3.1).
bool isFileScheme(std::u16string_view scheme) {
  return fl::i18n::detail::transform(scheme, fl::i18n::to_lower()) == u"file";
}

/// Whether a text is of the form that nearly all have: no authority, no query, no fragment.
bool isPlain(std::u16string_view text) {
  bool hasMore = false;
  for (const char16_t unit : text)  // without a branch, which is quicker than to stop
    hasMore |= unit == u'?' || unit == u'#';
  return text.starts_with(u"file:///") && !hasMore;
}

void requireNoMoreThanAPath(const StorageIRI& location) {
  if (!isFileScheme(location.getScheme()))
    throw refusal(ErrorCode::InvalidLocation, location, u"Only the scheme 'file' is served here");
  if (location.isOpaque())
    throw refusal(ErrorCode::InvalidLocation, location, u"This is a place inside a container");
  const auto iri = location.toIRI();
  if (iri.hasQuery() || iri.hasFragment())
    throw refusal(ErrorCode::InvalidLocation, location, u"In the name of a file '?' is written %3F, and '#' %23");
  if (iri.hasUserInfo() || iri.hasPort())
    throw refusal(ErrorCode::InvalidLocation, location, u"The file system knows no users and ports");
  // RFC 8089, section 2: "localhost" is this machine.
  if (location.hasHost() && location.getHost() != u"localhost")
    throw refusal(ErrorCode::InvalidLocation, location, u"Other hosts cannot be reached through the file system");
}

}  // namespace

void requireLocal(const StorageIRI& location) {
  if (!isPlain(location.toString()))
    requireNoMoreThanAPath(location);
  if (!location.getPath().starts_with(u'/') || location.getPath().starts_with(u"//"))
    throw refusal(ErrorCode::InvalidLocation, location, u"The path is not one of this system");
}

std::string nativePath(const StorageIRI& location) {
  requireLocal(location);
  auto path = fl::i18n::to_string(location.getPath());
  if (path.find('\0') != std::string::npos)
    throw refusal(ErrorCode::InvalidLocation, location, u"No name can hold a NUL");
  return withoutTrailingSlashes(std::move(path));
}

StorageIRI toLocation(const StorageIRI& like, const std::string& path) {
  return provider::toStorageIRI(like.getScheme(), fl::filesystem::upath(fl::i18n::to_ustring(path)));
}

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/')
    path.pop_back();
  return path;
}

}  // namespace foundation::storage::backend::local::detail
