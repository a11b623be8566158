#pragma once

#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <utility>

namespace foundation::storage::provider::detail {

/// What a copy of a file onto itself fails with; opening the destination would empty the source.
inline Exception selfCopyRefusal(const StorageIRI& destination) {
  Exception refusal(ErrorCode::InvalidLocation, destination);
  ExceptionContextInfo info(u"A file cannot be copied onto itself", {}, {{u"location", destination.toString()}});
  refusal.setExceptionContexts({ExceptionContext(u"copyFile", std::move(info))});
  return refusal;
}

}  // namespace foundation::storage::provider::detail
