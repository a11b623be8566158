#include <foundation/storage/provider/extensions/IFlushableFilesystem.h>

namespace foundation::storage::provider::extensions {

IFlushableFilesystem::~IFlushableFilesystem() = default;

}  // namespace foundation::storage::provider::extensions
