#pragma once

#include <foundation/storage/provider/StreamClosePolicy.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

namespace foundation::storage::provider {

/// A transaction over a stream that writes elsewhere than the target, and a handler that ends it: moves
/// what was written over the target, or removes it. For providers that override
/// `doOpenTransactionalStream`; the default is made of it.
///
/// @tparam Stream  the type of the stream, `ByteStream`
template <class Stream>
class GenericTransactionalStream final : public TransactionalStream {
 public:
  using CloseHandler = std::function<void(const StreamClosePolicy&)>;

  /// @param handler  called once the stream is closed; what it throws, `close` throws, and the transaction is
  ///                 still open then
  GenericTransactionalStream(std::shared_ptr<Stream> stream, CloseHandler handler)
      : stream_(std::move(stream)), handler_(std::move(handler)) {}

  /// Aborts what was not closed. A failure is written to the log; a second attempt is made then, since the
  /// first may have failed at closing the stream, before the handler could remove anything.
  ~GenericTransactionalStream() override {
    if (!abortQuietly())
      abortQuietly();
  }

 private:
  void doClose(const StreamClosePolicy& policy) override {
    if (state_.exchange(closed) != open)
      return;
    try {
      stream_->close();
      handler_(policy);
    } catch (...) {
      state_.store(open, std::memory_order_seq_cst);
      throw;
    }
  }

  ByteStream& doGetByteStream() override { return *stream_; }

  bool abortQuietly() noexcept {
    try {
      doClose(StreamClosePolicy::Abort);
      return true;
    } catch (...) {
      logFailedAbort();
      return false;
    }
  }

  static constexpr std::int32_t open = 0;
  static constexpr std::int32_t closed = 1;  ///< or being closed

  std::shared_ptr<Stream> stream_;
  CloseHandler handler_;
  std::atomic<std::int32_t> state_{open};
};

}  // namespace foundation::storage::provider
