#pragma once

#include <foundation/storage/backend/s3/detail/stream/ObjectWriter.h>
#include <foundation/storage/provider/ByteStream.h>

#include <exception>
#include <functional>

namespace foundation::storage::backend::s3::detail::stream {

/// Writes an object in order. After a failure in writing only its end is left; ending it otherwise than by `commit`
/// leaves the object as it was.
class WriteStream final : public provider::ByteStream {
 public:
  WriteStream(Target target, WriteMode mode, std::function<void()> published);
  /// Abandons what was not committed.
  ~WriteStream() override;

  /// Publishes what was written, and closes the stream; where it throws, the stream is still open, and both can be
  /// tried again, but nothing is published after an attempt to abort. Nothing happens where it is closed.
  /// @{
  void commit();
  void abort();
  /// @}

 private:
  std::int64_t doRead(char* buffer, std::int64_t count) override;
  std::int64_t doWrite(const char* buffer, std::int64_t count) override;
  std::streampos doSeek(std::int64_t offset, int origin) override;
  void doClose() override;

  void write(std::string_view bytes);
  void publish();

  const provider::StorageIRI location_;
  const std::function<void()> mayPublish_;
  const std::function<void()> published_;
  ObjectWriter writer_;
  bool isOpen_ = true;
  std::exception_ptr failure_;  ///< after which nothing can be written or published
};

}  // namespace foundation::storage::backend::s3::detail::stream
