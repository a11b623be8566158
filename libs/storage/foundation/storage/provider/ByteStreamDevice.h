#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <boost/iostreams/categories.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/smart_ptr/make_shared_object.hpp>

#include <cstdint>
#include <ios>
#include <memory>
#include <type_traits>
#include <utility>

namespace foundation::storage::provider {

/// A stream as a device of Boost.Iostreams, so that standard streams can be built over a store's files:
///
///     boost::iostreams::stream<ByteStreamDevice> in{ByteStreamDevice(stream)};
///
/// A device is copied freely; copies share one stream and its position, and the stream is destroyed
/// with the last of them.
///
/// A Boost stream with a buffer (every one but those whose last argument is 0) does not tell where a plain stream takes
/// only a part of what is left when it is closed, or fails to take it. Where that matters, on a store that may fill up
/// say, do without the buffer:
///
///     boost::iostreams::stream<ByteStreamDevice> out(ByteStreamDevice(stream), 0);
template <class Stream>
class GenericByteStreamDevice {
 public:
  /// What Boost.Iostreams asks of a device.
  /// @{
  using char_type = char;
  struct category : boost::iostreams::seekable_device_tag, boost::iostreams::closable_tag {};
  /// @}

  /// Takes the stream over; `stream` is empty afterwards.
  explicit GenericByteStreamDevice(std::unique_ptr<Stream>& stream)
      : shared_(boost::make_shared<Shared>(std::move(stream))) {}

  /// As the stream's own.
  std::int64_t read(char* buffer, std::int64_t count) const { return shared_->stream->read(buffer, count); }
  /// As the stream's own.
  std::int64_t write(const char* buffer, std::int64_t count) const {
    try {
      const auto written = shared_->stream->write(buffer, count);
      shared_->isShort = written < count;
      return written;
    } catch (...) {
      shared_->hasFailed = true;
      throw;
    }
  }
  /// As the stream's own.
  std::streampos seek(std::int64_t offset, int origin) const { return shared_->stream->seek(offset, origin); }

  /// Closes the stream. A transactional stream is committed: see `TransactionalStreamDevice`.
  void close() const {
    if constexpr (std::is_same_v<Stream, TransactionalStream>)
      commit();
    else
      shared_->stream->close();
  }

 protected:
  /// Ends a transaction.
  void end(const StreamClosePolicy& policy) const {
    shared_->isShort = shared_->hasFailed = false;
    shared_->stream->close(policy);
  }

 private:
  struct Shared {
    explicit Shared(std::unique_ptr<Stream> taken) : stream(std::move(taken)) {}

    const std::unique_ptr<Stream> stream;
    bool isShort = false;    ///< the last write has left something over
    bool hasFailed = false;  ///< some write has
  };

  void commit() const {
    if (!shared_->isShort && !shared_->hasFailed)
      return end(StreamClosePolicy::Commit);
    end(StreamClosePolicy::Abort);
    throw ByteStreamCloseFailure("Not all was written, so nothing is committed.", ErrorCode::IOError);
  }

  boost::shared_ptr<Shared> shared_;
};

/// The device over a plain stream.
class FOUNDATION_EXPORT ByteStreamDevice : public GenericByteStreamDevice<ByteStream> {
 public:
  using GenericByteStreamDevice<ByteStream>::GenericByteStreamDevice;
};

/// The device over a transactional stream. Closing it commits, and a Boost stream closes its device in its destructor,
/// also while an exception unwinds. So abort within the life of the Boost stream, where writing fails; the close that
/// follows then does nothing:
///
///     TransactionalStreamDevice device(stream);
///     boost::iostreams::stream<TransactionalStreamDevice> out(device);
///     out.exceptions(std::ios::badbit | std::ios::failbit);
///     try {
///       write(out);
///       out.close();  // commits
///     } catch (...) {
///       device.close(StreamClosePolicy::Abort);
///       throw;
///     }
///
/// Where a write failed, or the last one took less than it was given, as may that of the last buffer unnoticed, the
/// first closing without a policy aborts and throws a `ByteStreamCloseFailure` (`IOError`).
class FOUNDATION_EXPORT TransactionalStreamDevice : public GenericByteStreamDevice<TransactionalStream> {
 public:
  using GenericByteStreamDevice<TransactionalStream>::GenericByteStreamDevice;
  using GenericByteStreamDevice<TransactionalStream>::close;

  /// Ends the transaction, as `TransactionalStream::close`, whatever became of the writing.
  void close(const StreamClosePolicy& policy) const { end(policy); }
};

}  // namespace foundation::storage::provider
