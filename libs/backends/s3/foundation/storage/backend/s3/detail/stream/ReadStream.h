#pragma once

#include <foundation/storage/backend/s3/detail/stream/ContentCheck.h>
#include <foundation/storage/backend/s3/detail/stream/ReadAhead.h>
#include <foundation/storage/backend/s3/detail/stream/Streams.h>
#include <foundation/storage/provider/ByteStream.h>

#include <cstdint>
#include <memory>

namespace foundation::storage::backend::s3::detail::stream {

/// Reads an object. Whoever reads all of it in order learns of every byte that is not what was stored, where the store
/// has a checksum; what comes last is not given out then.
class ReadStream final : public provider::ByteStream {
 public:
  /// Reads the first piece; throws `client::StoreFailure` where there is nothing.
  explicit ReadStream(Target target);

 private:
  std::int64_t doRead(char* buffer, std::int64_t count) override;
  std::int64_t doWrite(const char* buffer, std::int64_t count) override;
  std::streampos doSeek(std::int64_t offset, int origin) override;
  void doClose() override { content_.reset(); }

  std::size_t readSome(char* buffer, std::size_t count);

  const provider::StorageIRI location_;
  std::unique_ptr<ReadAhead> content_;  ///< none once it is closed
  ContentCheck check_;
  std::uint64_t position_ = 0;
};

}  // namespace foundation::storage::backend::s3::detail::stream
