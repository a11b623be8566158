#pragma once

#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <fl/i18n/Convert.h>

#include <string>

namespace foundation::storage::backend::memory::detail {

/// The context of every failure: why, and where.
provider::ExceptionContexts contexts(const provider::StorageIRI& location, std::u16string reason);

provider::Exception refusal(provider::ErrorCode code, const provider::StorageIRI& location, std::u16string reason);

/// @tparam Failure  the subclass of `ByteStreamFailure` that the operation throws
template <class Failure>
Failure streamRefusal(provider::ErrorCode code, const provider::StorageIRI& location, std::u16string reason) {
  Failure failure(fl::i18n::to_string(location.toString() + u": " + reason), code);
  failure.setExceptionContexts(contexts(location, std::move(reason)));
  return failure;
}

}  // namespace foundation::storage::backend::memory::detail
