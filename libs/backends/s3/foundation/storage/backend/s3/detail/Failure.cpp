#include <foundation/storage/backend/s3/detail/Failure.h>

#include <foundation/storage/backend/s3/detail/http/Interrupt.h>

#include <new>
#include <utility>

namespace foundation::storage::backend::s3::detail {

using client::StoreFailure;
using provider::ErrorCode;
using provider::Exception;

namespace {

/// What the client says of a failure, and where it happened, which the client does not know.
provider::ExceptionContext frameOf(const StoreFailure& failure, const provider::StorageIRI& location) {
  const auto frame = failure.context();
  const auto info = frame.getExceptionContextInfo();
  auto details = info->getAdditionalInformation();
  details.emplace(u"location", location.toString());
  return provider::ExceptionContext(
      frame.getExceptionContextKey(),
      provider::ExceptionContextInfo(info->getProviderMessage(), info->getResponseErrorCode(), std::move(details)));
}

}  // namespace

provider::Exception refusal(ErrorCode code, const provider::StorageIRI& location, std::u16string reason) {
  Exception failure(code, location);
  failure.setExceptionContexts({provider::ExceptionContext(
      u"s3", provider::ExceptionContextInfo(std::move(reason), {}, {{u"location", location.toString()}}))});
  return failure;
}

Cause currentCause(const provider::StorageIRI& location) {
  const auto own = [&location](ErrorCode code, std::u16string reason) {
    const auto failure = refusal(code, location, reason);
    return Cause{code, std::move(reason), failure.getAllExceptionContexts()};
  };
  try {
    throw;
  } catch (const StoreFailure& failure) {
    return {failure.errorCode(), fl::i18n::to_ustring(failure.what()), {frameOf(failure, location)}};
  } catch (const Exception& failure) {
    const auto top = failure.topExceptionContext();
    const auto info = top ? top->getExceptionContextInfo() : std::nullopt;
    return {failure.getErrorCode(), info ? info->getProviderMessage() : std::u16string(u"The store has refused"),
            failure.getAllExceptionContexts()};
  } catch (const provider::ByteStreamFailure& failure) {
    return {failure.getErrorCode(), fl::i18n::to_ustring(failure.what()), failure.getAllExceptionContexts()};
  } catch (const http::Interrupted&) {
    return own(ErrorCode::IOError, u"The operation was interrupted");
  } catch (const std::bad_alloc&) {
    return own(ErrorCode::InternalError, u"There is no memory left");
  }
}

}  // namespace foundation::storage::backend::s3::detail
