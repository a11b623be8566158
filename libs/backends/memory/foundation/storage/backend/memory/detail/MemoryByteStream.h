#pragma once

#include <foundation/storage/backend/memory/detail/FileContent.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <memory>
#include <optional>

namespace foundation::storage::backend::memory::detail {

/// A file's content, open. It stays readable and writable when its entry is moved, replaced or removed.
class MemoryByteStream final : public provider::ByteStream {
 public:
  enum class Mode { Positioned, Appending };

  /// @param location  for the texts of failures
  MemoryByteStream(std::shared_ptr<FileContent> content, Mode mode, provider::StorageIRI location);

 private:
  std::int64_t doRead(char* buffer, std::int64_t count) override;
  std::int64_t doWrite(const char* buffer, std::int64_t count) override;
  std::streampos doSeek(std::int64_t offset, int origin) override;
  void doClose() override { content_.reset(); }

  template <class Failure>
  void requireOpen() const;
  FileContent::Written write(std::optional<std::uint64_t> position, const char* bytes, std::size_t count);
  std::int64_t base(int origin) const;

  std::shared_ptr<FileContent> content_;  ///< none once it is closed
  Mode mode_;
  std::int64_t position_ = 0;
  provider::StorageIRI location_;
};

}  // namespace foundation::storage::backend::memory::detail
