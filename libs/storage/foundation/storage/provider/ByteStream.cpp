#include <foundation/storage/provider/ByteStream.h>

namespace foundation::storage::provider {

ByteStream::~ByteStream() = default;

}  // namespace foundation::storage::provider
