#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/StreamClosePolicy.h>

#include <boost/core/noncopyable.hpp>

#include <cstdint>
#include <ios>

namespace foundation::storage::provider {

class ByteStream;

/// A file being written that nobody sees until it is whole. `close` with `StreamClosePolicy::Commit`
/// puts it in the place of the target (in one step, if the store moves files in one step); `Abort`, or destroying the
/// stream, throws it away:
///
///     const auto stream = item.openTransactionalStream({});
///     write(*stream);                             // may throw: the target stays as it is
///     stream->close(StreamClosePolicy::Commit);
///
/// `read`, `write` and `seek` are those of `ByteStream`. The provider must outlive its streams. Several
/// threads may close one stream, all else is for one thread at a time.
class FOUNDATION_EXPORT TransactionalStream : private boost::noncopyable {
 public:
  virtual ~TransactionalStream();

  /// As `ByteStream`'s of the same name, on what is being written.
  /// @{
  std::int64_t read(char* buffer, std::int64_t count) { return doRead(buffer, count); }
  std::int64_t write(const char* buffer, std::int64_t count) { return doWrite(buffer, count); }
  std::streampos seek(std::int64_t offset, int origin) { return doSeek(offset, origin); }
  /// @}

  /// Ends the transaction. Closing again, with whatever policy, does nothing. Where it throws, the
  /// transaction is still open and may be closed again.
  void close(const StreamClosePolicy& policy) { doClose(policy); }

 protected:
  TransactionalStream() = default;

  /// For destructors, which swallow the failure: writes to the diagnostic log (channel
  /// "foundation::storage::provider") that aborting failed, and why: the exception being handled, without
  /// passwords that its location may hold. What was written may have been left behind.
  static void logFailedAbort() noexcept;

 private:
  virtual std::int64_t doRead(char* buffer, std::int64_t count);
  virtual std::int64_t doWrite(const char* buffer, std::int64_t count);
  virtual std::streampos doSeek(std::int64_t offset, int origin);
  virtual void doClose(const StreamClosePolicy& policy) = 0;
  /// The stream that the bytes go to.
  virtual ByteStream& doGetByteStream() = 0;

  ByteStream& byteStream() { return doGetByteStream(); }
};

}  // namespace foundation::storage::provider
