#pragma once

#include <foundation/core/Export.h>

#include <boost/core/noncopyable.hpp>

#include <cstdint>
#include <ios>

namespace foundation::storage::provider {

/// The content of one file, open: the one way in which bytes move. Streams come from
/// `IProvider::openStream` and `openReadOnlyStream`; back ends derive from this class.
///
/// Every failure is thrown as the subclass of `ByteStreamFailure` that names the operation. Destroying
/// a stream releases it without reporting anything: whoever wrote through it calls `close()` to learn
/// whether all went well. One stream is for one thread at a time.
class FOUNDATION_EXPORT ByteStream : private boost::noncopyable {
 public:
  virtual ~ByteStream();

  /// Reads up to `count` bytes at the position and moves it.
  /// @return the number of bytes read, at least 1 unless `count` is 0; -1 at the end of the data and
  ///         from a stream that was not opened for reading (take 0 as the end, too)
  std::int64_t read(char* buffer, std::int64_t count) { return doRead(buffer, count); }

  /// Writes up to `count` bytes at the position (in append mode at the end) and moves it.
  /// @return the number of bytes written, at least 1 unless `count` is 0
  std::int64_t write(const char* buffer, std::int64_t count) { return doWrite(buffer, count); }

  /// Moves the position.
  /// @param offset  in bytes, may be negative
  /// @param origin  a value of `std::ios_base::seekdir`: beginning, current position or end
  /// @return the new position in bytes from the beginning. Positions beyond the end are allowed; a
  ///         write there leaves a gap of zeros. One before the beginning is refused, and nothing moves.
  std::streampos seek(std::int64_t offset, int origin) { return doSeek(offset, origin); }

  /// Ends the stream: what was written is handed to the store. Closing again does nothing; any other
  /// use of a closed stream fails.
  void close() { doClose(); }

 protected:
  ByteStream() = default;

 private:
  virtual std::int64_t doRead(char* buffer, std::int64_t count) = 0;
  virtual std::int64_t doWrite(const char* buffer, std::int64_t count) = 0;
  virtual std::streampos doSeek(std::int64_t offset, int origin) = 0;
  virtual void doClose() = 0;
};

}  // namespace foundation::storage::provider
