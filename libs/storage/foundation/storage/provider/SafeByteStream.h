#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/ByteStream.h>

#include <memory>

namespace foundation::storage::provider {

/// Keeps the promises of how a stream was opened, whatever the back end's stream would allow. Reading
/// from one that is not readable yields -1 and does not reach the inner stream; writing to one that is
/// not writable throws `ByteStreamWriteFailure` with `ErrorCode::IOError`. All else is the inner
/// stream's.
class FOUNDATION_EXPORT SafeByteStream final : public ByteStream {
 public:
  /// @param inner  does the work; not null
  SafeByteStream(std::unique_ptr<ByteStream> inner, bool readable, bool writable);
  ~SafeByteStream() override;

 private:
  std::int64_t doRead(char* buffer, std::int64_t count) override;
  std::int64_t doWrite(const char* buffer, std::int64_t count) override;
  std::streampos doSeek(std::int64_t offset, int origin) override;
  void doClose() override;

  std::unique_ptr<ByteStream> inner_;
  bool readable_;
  bool writable_;
};

}  // namespace foundation::storage::provider
