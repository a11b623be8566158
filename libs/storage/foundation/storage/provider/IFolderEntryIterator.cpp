#include <foundation/storage/provider/IFolderEntryIterator.h>

namespace foundation::storage::provider {

IFolderEntryIterator::~IFolderEntryIterator() = default;

}  // namespace foundation::storage::provider
