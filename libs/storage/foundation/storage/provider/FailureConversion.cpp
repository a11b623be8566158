#include <foundation/storage/provider/FailureConversion.h>

namespace foundation::storage::provider {

Exception toException(const ByteStreamFailure& failure, const StorageIRI& location) {
  Exception exception(failure.getErrorCode(), location);
  exception.setExceptionContexts(failure.getAllExceptionContexts());
  return exception;
}

}  // namespace foundation::storage::provider
