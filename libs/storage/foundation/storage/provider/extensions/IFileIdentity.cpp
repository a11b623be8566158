#include <foundation/storage/provider/extensions/IFileIdentity.h>

namespace foundation::storage::provider::extensions {

IFileIdentity::~IFileIdentity() = default;

}  // namespace foundation::storage::provider::extensions
