#pragma once

#include <foundation/storage/backend/archive/detail/Archive.h>
#include <foundation/storage/provider/ByteStream.h>

#include <memory>

namespace foundation::storage::backend::archive::detail {

/// Reads and writes staged content. It stays usable when its entry is moved, replaced or removed.
class StagedStream final : public provider::ByteStream {
 public:
  enum class Mode { Positioned, Appending };

  /// Reads only.
  /// @param location  for the texts of failures
  StagedStream(std::shared_ptr<const StagedContent> content, provider::StorageIRI location);
  /// Writes, too.
  /// @param archive  told of what was written when the stream is closed; null where somebody else does that
  StagedStream(std::unique_ptr<StagedContent::Writing> writing, Mode mode, std::shared_ptr<Archive> archive,
               provider::StorageIRI location);

 private:
  std::int64_t doRead(char* buffer, std::int64_t count) override;
  std::int64_t doWrite(const char* buffer, std::int64_t count) override;
  std::streampos doSeek(std::int64_t offset, int origin) override;
  void doClose() override;

  std::shared_ptr<const StagedContent> content_;  ///< none once it is closed
  std::unique_ptr<StagedContent::Writing> writing_;
  Mode mode_ = Mode::Positioned;
  std::shared_ptr<Archive> archive_;
  provider::StorageIRI location_;
  std::int64_t position_ = 0;
};

}  // namespace foundation::storage::backend::archive::detail
