#include <foundation/storage/backend/local/detail/posix/Failure.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/posix/OutOfRoot.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace foundation::storage::backend::local::detail {

using provider::ErrorCode;
using provider::ExceptionContext;
using provider::ExceptionContextInfo;
using provider::ExceptionContexts;
using provider::StorageIRI;

ErrorCode codeOf(int error) noexcept {
  switch (error) {
    case ENOENT:
      return ErrorCode::ResourceNotFound;
    case EEXIST:
      return ErrorCode::ResourceAlreadyExists;
    case ENOTEMPTY:
      return ErrorCode::FolderNotEmpty;
    case EACCES:
    case EPERM:
    case leadsOutOfRoot:
      return ErrorCode::PermissionDenied;
    case EROFS:
      return ErrorCode::ReadOnlyProvider;
    case ENOTDIR:  // a path through a file, or a file where a folder is needed
    case EISDIR:
    case ENAMETOOLONG:
    case ELOOP:
    case EINVAL:
    case EILSEQ:
      return ErrorCode::InvalidLocation;
    case ENOSPC:
    case EDQUOT:
      return ErrorCode::NoSpaceLeft;
    case EFBIG:
    case EOVERFLOW:
      return ErrorCode::FileTooLarge;
    case EBUSY:
    case ETXTBSY:
    case EAGAIN:
      return ErrorCode::ResourceInUse;
    case EXDEV:
    case ENXIO:
    case ENODEV:
    case ENOSYS:
    case EOPNOTSUPP:
    case ESPIPE:
      return ErrorCode::UnsupportedOperation;
    case EIO:
    case EBADF:
    case EPIPE:
    case ESTALE:
    case EREMOTEIO:
    case ETIMEDOUT:
    case EMLINK:
      return ErrorCode::IOError;
    case EMFILE:
    case ENFILE:
    case ENOBUFS:
    case ENOMEM:
      return ErrorCode::InternalError;
    default:
      return ErrorCode::Unknown;
  }
}

std::string systemMessage(int error) {
  return error == leadsOutOfRoot ? "The path leads out of the folder that this provider is confined to"
                                 : std::generic_category().message(error);
}

ExceptionContexts systemContexts(int error, const char* call, const StorageIRI& location) {
  ExceptionContextInfo::AdditionalInformation details{{u"location", location.toString()}};
  if (const char* name = strerrorname_np(error))
    details.emplace(u"name", fl::i18n::to_ustring(name));
  const auto number = error == leadsOutOfRoot ? std::string() : std::to_string(error);
  ExceptionContextInfo info(fl::i18n::to_ustring(systemMessage(error)), fl::i18n::to_ustring(number),
                            std::move(details));
  return {ExceptionContext(fl::i18n::to_ustring(call), std::move(info))};
}

provider::Exception systemFailure(int error, const char* call, const StorageIRI& location) {
  provider::Exception failure(codeOf(error), location);
  failure.setExceptionContexts(systemContexts(error, call, location));
  return failure;
}

provider::Exception refusal(ErrorCode code, const StorageIRI& location, std::u16string reason) {
  provider::Exception failure(code, location);
  failure.setExceptionContexts(ownContexts(location, std::move(reason)));
  return failure;
}

void addContext(provider::Exception& failure, const provider::Exception& further) {
  auto contexts = failure.getAllExceptionContexts();
  for (auto& context : further.getAllExceptionContexts())
    contexts.push_back(std::move(context));
  failure.setExceptionContexts(std::move(contexts));
}

ExceptionContexts ownContexts(const StorageIRI& location, std::u16string reason) {
  ExceptionContextInfo info(std::move(reason), {}, {{u"location", location.toString()}});
  return {ExceptionContext(u"local", std::move(info))};
}

std::string streamMessage(const StorageIRI& location, const std::string& reason) {
  return fl::i18n::to_string(location.toString()) + ": " + reason;
}

}  // namespace foundation::storage::backend::local::detail
