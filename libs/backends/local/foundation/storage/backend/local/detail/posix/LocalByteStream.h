#pragma once

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace foundation::storage::backend::local::detail {

/// The content of an open file.
class LocalByteStream final : public provider::ByteStream {
 public:
  /// @param location  for the texts of failures
  LocalByteStream(Descriptor descriptor, provider::StorageIRI location);

  /// Of a file that somebody else closes, who must outlive the stream.
  LocalByteStream(int descriptor, provider::StorageIRI location);

 private:
  std::int64_t doRead(char* buffer, std::int64_t count) override;
  /// Writes all of it, unless the system fails in the middle: then what was written counts, and the
  /// next call reports the failure.
  std::int64_t doWrite(const char* buffer, std::int64_t count) override;
  std::streampos doSeek(std::int64_t offset, int origin) override;
  void doClose() override;

  Descriptor owned_;
  int descriptor_;  ///< -1 once it is closed
  provider::StorageIRI location_;
};

}  // namespace foundation::storage::backend::local::detail
