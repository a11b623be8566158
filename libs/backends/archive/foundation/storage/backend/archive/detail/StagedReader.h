#pragma once

#include <foundation/storage/backend/archive/detail/ContentReader.h>
#include <foundation/storage/backend/archive/detail/StagedContent.h>

namespace foundation::storage::backend::archive::detail {

/// Reads staged content for whoever writes it into an archive: all of it is of one moment, however many streams go on
/// writing.
class StagedReader final : public ContentReader {
 public:
  explicit StagedReader(const StagedContent& content) : content_(content) {}

  const StagedContent::Snapshot& content() const { return content_; }

  std::size_t read(char* buffer, std::size_t count) override {
    const auto got = content_.read(position_, buffer, count);
    position_ += got;
    return got;
  }
  bool isSeekable() const override { return true; }
  bool seek(std::uint64_t position) override {
    position_ = position;
    return true;
  }

 private:
  const StagedContent::Snapshot content_;
  std::uint64_t position_ = 0;
};

}  // namespace foundation::storage::backend::archive::detail
