#include <foundation/storage/backend/local/detail/posix/SubscriptionFailure.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/support/Log.h>
#include <foundation/storage/provider/ChangeEventsSubscriptionException.h>
#include <foundation/storage/provider/LogText.h>

#include <boost/exception/errinfo_nested_exception.hpp>
#include <boost/exception_ptr.hpp>

#include <cerrno>
#include <exception>
#include <string_view>
#include <utility>

namespace foundation::storage::backend::local::detail {

using provider::ChangeEventsSubscriptionException;
using provider::StorageIRI;

namespace {

/// Which setting of the kernel's raises the limit that an error number stands for; none for other errors.
/// inotify_init1(2) and inotify_add_watch(2), "Errors".
std::string_view settingBehind(int error) {
  if (error == ENOSPC)
    return "the limit of watches is reached, see the kernel setting fs.inotify.max_user_watches";
  if (error == EMFILE)
    return "the limit of inotify instances, see the kernel setting fs.inotify.max_user_instances, or that of open "
           "files is reached";
  return {};
}

std::string reasonOf(const provider::Exception& failure) {
  const auto context = failure.topExceptionContext();
  const auto info = context ? context->getExceptionContextInfo() : std::nullopt;
  return info ? fl::i18n::to_string(info->getProviderMessage()) : failure.what();
}

std::string currentReason() {
  try {
    throw;
  } catch (const provider::Exception& failure) {
    return reasonOf(failure);
  } catch (const std::exception& failure) {
    return failure.what();
  } catch (...) {
    return "exception of an unknown type";
  }
}

}  // namespace

provider::Exception watchFailure(int error, const char* call, const StorageIRI& location) {
  const auto setting = settingBehind(error);
  if (setting.empty())
    return systemFailure(error, call, location);
  const auto reason = systemMessage(error).append(": ").append(setting);
  support::logError("Changes of " + toLogText(location) + " cannot be watched: " + reason);
  provider::Exception failure(provider::ErrorCode::InternalError, location);
  const auto contexts = systemContexts(error, call, location);
  const auto info = contexts.front().getExceptionContextInfo();
  failure.setExceptionContexts({provider::ExceptionContext(
      contexts.front().getExceptionContextKey(),
      provider::ExceptionContextInfo(fl::i18n::to_ustring(reason), info->getResponseErrorCode(),
                                     info->getAdditionalInformation()))});
  return failure;
}

void refuseSubscription(const StorageIRI& location) {
  throw ChangeEventsSubscriptionException(location)
      << boost::errinfo_nested_exception(boost::current_exception()) << SubscriptionReason(currentReason());
}

void refuseSubscription(const StorageIRI& location, const std::string& reason) {
  throw ChangeEventsSubscriptionException(location) << SubscriptionReason(reason);
}

}  // namespace foundation::storage::backend::local::detail
