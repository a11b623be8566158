#include <foundation/storage/backend/s3/detail/stream/Streams.h>

#include <foundation/storage/backend/s3/detail/stream/ReadStream.h>
#include <foundation/storage/backend/s3/detail/stream/Transaction.h>

#include <utility>

namespace foundation::storage::backend::s3::detail::stream {

std::unique_ptr<provider::ByteStream> openReading(Target target) {
  return std::make_unique<ReadStream>(std::move(target));
}

std::unique_ptr<provider::ByteStream> openWriting(Target target, WriteMode mode, std::function<void()> published) {
  return std::make_unique<WriteStream>(std::move(target), std::move(mode), std::move(published));
}

std::unique_ptr<provider::TransactionalStream> openTransaction(Target target, WriteMode mode,
                                                               std::function<void()> published) {
  return std::make_unique<Transaction>(std::move(target), std::move(mode), std::move(published));
}

}  // namespace foundation::storage::backend::s3::detail::stream
