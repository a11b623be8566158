#include <foundation/storage/backend/local/detail/NativePath.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>

namespace foundation::storage::backend::local::detail {

using provider::ErrorCode;
using provider::StorageIRI;

void requireLocal(const StorageIRI& location) {
  if (location.getScheme() != u"file")
    throw refusal(ErrorCode::InvalidLocation, location, u"Only the scheme 'file' is served here");
  if (location.hasHost())
    throw refusal(ErrorCode::InvalidLocation, location, u"Other hosts cannot be reached through the file system");
  if (!location.getPath().starts_with(u'/'))
    throw refusal(ErrorCode::InvalidLocation, location, u"The path does not begin with '/'");
}

std::string nativePath(const StorageIRI& location) {
  requireLocal(location);
  auto path = fl::i18n::to_string(location.getPath());
  if (path.find('\0') != std::string::npos)
    throw refusal(ErrorCode::InvalidLocation, location, u"No name can hold a NUL");
  while (path.size() > 1 && path.back() == '/')
    path.pop_back();
  return path;
}

}  // namespace foundation::storage::backend::local::detail
