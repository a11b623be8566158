#include <foundation/storage/provider/TransactionalStream.h>

#include <foundation/storage/provider/ByteStream.h>

namespace foundation::storage::provider {

TransactionalStream::~TransactionalStream() = default;

std::int64_t TransactionalStream::doRead(char* buffer, std::int64_t count) { return byteStream().read(buffer, count); }

std::int64_t TransactionalStream::doWrite(const char* buffer, std::int64_t count) {
  return byteStream().write(buffer, count);
}

std::streampos TransactionalStream::doSeek(std::int64_t offset, int origin) {
  return byteStream().seek(offset, origin);
}

}  // namespace foundation::storage::provider
