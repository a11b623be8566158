#pragma once

#include <foundation/storage/backend/s3/detail/stream/WriteStream.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <mutex>

namespace foundation::storage::backend::s3::detail::stream {

/// An object being written, as a transaction: the store itself shows nothing before the commit.
class Transaction final : public provider::TransactionalStream {
 public:
  Transaction(Target target, WriteMode mode, std::function<void()> published);

 private:
  void doClose(const provider::StreamClosePolicy& policy) override;
  provider::ByteStream& doGetByteStream() override { return stream_; }

  std::mutex mutex_;  ///< held while it is being closed
  WriteStream stream_;
};

}  // namespace foundation::storage::backend::s3::detail::stream
