#include <foundation/storage/backend/archive/detail/Failure.h>

#include <new>

namespace foundation::storage::backend::archive::detail {

using provider::ExceptionContext;
using provider::ExceptionContextInfo;

ExceptionContext context(const provider::StorageIRI& location, std::u16string reason) {
  ExceptionContextInfo info(std::move(reason), {}, {{u"location", location.toString()}});
  return ExceptionContext(u"archive", std::move(info));
}

provider::Exception refusal(provider::ErrorCode code, const provider::StorageIRI& location, std::u16string reason) {
  provider::Exception failure(code, location);
  failure.setExceptionContexts({context(location, std::move(reason))});
  return failure;
}

Cause currentCause() {
  try {
    throw;
  } catch (const Fault& fault) {
    return {fault.code(), fl::i18n::to_ustring(fault.what()), {}};
  } catch (const provider::Exception& failure) {
    return {failure.getErrorCode(), u"The store that holds the archive failed", failure.getAllExceptionContexts()};
  } catch (const provider::ByteStreamFailure& failure) {
    return {failure.getErrorCode(), u"The store that holds the archive failed", failure.getAllExceptionContexts()};
  } catch (const std::bad_alloc&) {
    return {provider::ErrorCode::InternalError, u"There is no memory left", {}};
  }
}

}  // namespace foundation::storage::backend::archive::detail
