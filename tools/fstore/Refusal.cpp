#include <fstore/Refusal.h>

#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;

provider::Exception refusal(provider::ErrorCode code, const provider::StorageIRI& location, std::u16string reason) {
  provider::Exception failure(code, location);
  failure.setExceptionContexts(
      {provider::ExceptionContext(u"fstore", provider::ExceptionContextInfo(std::move(reason), {}, {}))});
  return failure;
}

}  // namespace fstore
