#pragma once

#include <foundation/storage/backend/s3/detail/Failure.h>

#include <cstdint>
#include <string>
#include <utility>

namespace foundation::storage::backend::s3::detail::stream {

/// What a stream refuses of itself.
/// @tparam Failure  the subclass of `ByteStreamFailure` that the operation throws
template <class Failure>
Failure refusedStream(provider::ErrorCode code, const provider::StorageIRI& location, std::u16string reason) {
  auto contexts = refusal(code, location, reason).getAllExceptionContexts();
  return streamRefusal<Failure>(location, {code, std::move(reason), std::move(contexts)});
}

/// Refuses an operation of a stream that is closed, or for a number of bytes that is none.
template <class Failure>
void requireOpenFor(bool isOpen, std::int64_t count, const provider::StorageIRI& location) {
  if (!isOpen)
    throw refusedStream<Failure>(provider::ErrorCode::IOError, location, u"The stream is closed");
  if (count < 0)
    throw refusedStream<Failure>(provider::ErrorCode::IOError, location, u"The count is negative");
}

}  // namespace foundation::storage::backend::s3::detail::stream
