#pragma once

#include <foundation/storage/backend/s3/detail/client/StoreFailure.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <fl/i18n/Convert.h>

#include <string>

namespace foundation::storage::backend::s3::detail {

/// A failure that this back end finds itself, with a frame of context that gives the reason.
provider::Exception refusal(provider::ErrorCode code, const provider::StorageIRI& location, std::u16string reason);

/// What a failure that is being handled says. Rethrows what is none of ours.
struct Cause {
  provider::ErrorCode code;
  std::u16string reason;
  provider::ExceptionContexts contexts;
};
/// @param location  where it happened; put into the frame
Cause currentCause(const provider::StorageIRI& location);

/// @tparam Failure  the subclass of `ByteStreamFailure` that the operation throws
template <class Failure>
Failure streamRefusal(const provider::StorageIRI& location, Cause cause) {
  Failure failure(fl::i18n::to_string(location.toString() + u": " + cause.reason), cause.code);
  failure.setExceptionContexts(std::move(cause.contexts));
  return failure;
}

/// Calls `action`, and says of a `StoreFailure` in it that it happened at `location`.
template <class Action>
auto at(const provider::StorageIRI& location, const Action& action) -> decltype(action()) {
  try {
    return action();
  } catch (const provider::Exception&) {
    throw;
  } catch (...) {
    auto cause = currentCause(location);
    provider::Exception failure(cause.code, location);
    failure.setExceptionContexts(std::move(cause.contexts));
    throw failure;
  }
}

/// The same for the operation of a stream, also where it meets an `Exception`.
template <class Failure, class Action>
auto streamingAt(const provider::StorageIRI& location, const Action& action) -> decltype(action()) {
  try {
    return action();
  } catch (...) {
    throw streamRefusal<Failure>(location, currentCause(location));
  }
}

}  // namespace foundation::storage::backend::s3::detail
