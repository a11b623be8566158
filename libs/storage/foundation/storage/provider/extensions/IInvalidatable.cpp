#include <foundation/storage/provider/extensions/IInvalidatable.h>

namespace foundation::storage::provider::extensions {

IInvalidatable::~IInvalidatable() = default;

}  // namespace foundation::storage::provider::extensions
