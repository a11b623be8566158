#include <foundation/storage/provider/SafeByteStream.h>

#include <foundation/storage/provider/ByteStreamFailure.h>

#include <utility>

namespace foundation::storage::provider {

SafeByteStream::SafeByteStream(std::unique_ptr<ByteStream> inner, bool readable, bool writable)
    : inner_(std::move(inner)), readable_(readable), writable_(writable) {}

SafeByteStream::~SafeByteStream() = default;

std::int64_t SafeByteStream::doRead(char* buffer, std::int64_t count) {
  return readable_ ? inner_->read(buffer, count) : -1;
}

std::int64_t SafeByteStream::doWrite(const char* buffer, std::int64_t count) {
  if (!writable_)
    throw ByteStreamWriteFailure("Stream was not opened for writing.", ErrorCode::IOError);
  return inner_->write(buffer, count);
}

std::streampos SafeByteStream::doSeek(std::int64_t offset, int origin) { return inner_->seek(offset, origin); }

void SafeByteStream::doClose() { inner_->close(); }

}  // namespace foundation::storage::provider
