#include <foundation/storage/backend/memory/detail/Failure.h>

#include <utility>

namespace foundation::storage::backend::memory::detail {

using provider::ExceptionContext;
using provider::ExceptionContextInfo;

provider::ExceptionContexts contexts(const provider::StorageIRI& location, std::u16string reason) {
  ExceptionContextInfo info(std::move(reason), {}, {{u"location", location.toString()}});
  return {ExceptionContext(u"memory", std::move(info))};
}

provider::Exception refusal(provider::ErrorCode code, const provider::StorageIRI& location, std::u16string reason) {
  provider::Exception failure(code, location);
  failure.setExceptionContexts(contexts(location, std::move(reason)));
  return failure;
}

}  // namespace foundation::storage::backend::memory::detail
