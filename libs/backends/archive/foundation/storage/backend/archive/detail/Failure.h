#pragma once

#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <fl/i18n/Convert.h>

#include <cstdint>
#include <string>
#include <utility>

namespace foundation::storage::backend::archive::detail {

/// The context of every failure: why, and where.
provider::ExceptionContext context(const provider::StorageIRI& location, std::u16string reason);

provider::Exception refusal(provider::ErrorCode code, const provider::StorageIRI& location, std::u16string reason);

/// @tparam Failure  the subclass of `ByteStreamFailure` that the operation throws
/// @param below     what is known already of the cause
template <class Failure>
Failure streamRefusal(provider::ErrorCode code, const provider::StorageIRI& location, const std::u16string& reason,
                      provider::ExceptionContexts below = {}) {
  Failure failure(fl::i18n::to_string(location.toString() + u": " + reason), code);
  below.insert(below.begin(), context(location, reason));
  failure.setExceptionContexts(std::move(below));
  return failure;
}

/// Refuses an operation of a stream that is closed, or for a number of bytes that is none.
template <class Failure>
void requireOpenFor(bool isOpen, std::int64_t count, const provider::StorageIRI& location) {
  if (!isOpen)
    throw streamRefusal<Failure>(provider::ErrorCode::IOError, location, u"The stream is closed");
  if (count < 0)
    throw streamRefusal<Failure>(provider::ErrorCode::IOError, location, u"The count is negative");
}

/// Calls `action`, and says of what goes wrong in it that it did so at `location`: a `Fault`, a failure of the stores
/// and streams below, too little memory.
template <class Action>
auto at(const provider::StorageIRI& location, const Action& action) -> decltype(action());

/// The same for the operation of a stream.
template <class Failure, class Action>
auto streamingAt(const provider::StorageIRI& location, const Action& action) -> decltype(action());

// --- Implementation ---

/// What a failure that is being handled says. Rethrows what is none of ours.
struct Cause {
  provider::ErrorCode code;
  std::u16string reason;
  provider::ExceptionContexts contexts;
};
Cause currentCause();

template <class Action>
auto at(const provider::StorageIRI& location, const Action& action) -> decltype(action()) {
  try {
    return action();
  } catch (...) {
    auto cause = currentCause();
    provider::Exception failure(cause.code, location);
    cause.contexts.insert(cause.contexts.begin(), context(location, std::move(cause.reason)));
    failure.setExceptionContexts(std::move(cause.contexts));
    throw failure;
  }
}

template <class Failure, class Action>
auto streamingAt(const provider::StorageIRI& location, const Action& action) -> decltype(action()) {
  try {
    return action();
  } catch (...) {
    auto cause = currentCause();
    throw streamRefusal<Failure>(cause.code, location, cause.reason, std::move(cause.contexts));
  }
}

}  // namespace foundation::storage::backend::archive::detail
