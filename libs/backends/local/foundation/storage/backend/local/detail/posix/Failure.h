#pragma once

#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <string>

/// From the system's error numbers to the library's failures.
namespace foundation::storage::backend::local::detail {

/// What an error number (errno(3)) means to a caller of the library.
provider::ErrorCode codeOf(int error) noexcept;

/// Context that tells what the system said, and of which location.
/// @param call  the system call that failed
provider::ExceptionContexts systemContexts(int error, const char* call, const provider::StorageIRI& location);

/// A system call on `location` failed.
provider::Exception systemFailure(int error, const char* call, const provider::StorageIRI& location);

/// The library refuses by itself.
provider::Exception refusal(provider::ErrorCode code, const provider::StorageIRI& location, std::u16string reason);

/// Puts the contexts of a further failure behind those of the first.
void addContext(provider::Exception& failure, const provider::Exception& further);

/// Context for what the library refuses by itself.
provider::ExceptionContexts ownContexts(const provider::StorageIRI& location, std::u16string reason);

/// The message of a stream's failure: the location and the reason.
std::string streamMessage(const provider::StorageIRI& location, const std::string& reason);

/// "No such file or directory" and the like.
std::string systemMessage(int error);

/// A system call on an open file failed.
/// @tparam Failure  the subclass of `ByteStreamFailure` that the stream operation throws
template <class Failure>
Failure streamFailure(int error, const char* call, const provider::StorageIRI& location) {
  Failure failure(streamMessage(location, systemMessage(error)), codeOf(error));
  failure.setExceptionContexts(systemContexts(error, call, location));
  return failure;
}

/// The library refuses an operation of a stream by itself.
/// @param reason  ASCII
template <class Failure>
Failure streamRefusal(provider::ErrorCode code, const provider::StorageIRI& location, const std::string& reason) {
  Failure failure(streamMessage(location, reason), code);
  failure.setExceptionContexts(ownContexts(location, std::u16string(reason.begin(), reason.end())));
  return failure;
}

}  // namespace foundation::storage::backend::local::detail
