#pragma once

#include <foundation/storage/provider/StreamClosePolicy.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <atomic>
#include <cstdint>
#include <exception>
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
  /// Ends the transaction: commits or aborts it, as its argument says.
  using CloseHandler = std::function<void(const StreamClosePolicy&)>;

  /// @param handler  called once the stream is closed; what it throws, `close` throws, and the transaction is
  ///                 still open then
  GenericTransactionalStream(std::shared_ptr<Stream> stream, CloseHandler handler)
      : stream_(std::move(stream)), handler_(std::move(handler)) {}

  /// Aborts what was not closed. Where that fails, a second attempt is made, since the first may have failed
  /// at closing the stream, before the handler could remove anything; if that fails too, the log says so.
  ~GenericTransactionalStream() override {
    try {
      doClose(StreamClosePolicy::Abort);
    } catch (...) {
      abortAgain();
    }
  }

 private:
  void doClose(const StreamClosePolicy& policy) override {
    if (state_.exchange(closed) != open)
      return;
    try {
      closeStream(policy);
      handler_(policy);
    } catch (...) {
      state_.store(open, std::memory_order_seq_cst);
      throw;
    }
  }

  /// Closes the stream, once. What a stream that failed to close has written may be incomplete: it is never
  /// committed, however often that is tried, but can still be aborted.
  void closeStream(const StreamClosePolicy& policy) {
    if (closeFailure_ && policy == StreamClosePolicy::Commit)
      std::rethrow_exception(closeFailure_);
    if (std::exchange(isStreamClosed_, true))
      return;
    try {
      stream_->close();
    } catch (...) {
      closeFailure_ = std::current_exception();
      throw;
    }
  }

  ByteStream& doGetByteStream() override { return *stream_; }

  void abortAgain() noexcept {
    try {
      doClose(StreamClosePolicy::Abort);
    } catch (...) {
      logFailedAbort();
    }
  }

  static constexpr std::int32_t open = 0;
  static constexpr std::int32_t closed = 1;  ///< or being closed

  std::shared_ptr<Stream> stream_;
  CloseHandler handler_;
  std::atomic<std::int32_t> state_{open};
  // For whoever has just changed the state from open.
  bool isStreamClosed_ = false;
  std::exception_ptr closeFailure_;
};

}  // namespace foundation::storage::provider
