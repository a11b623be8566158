#pragma once

#include <foundation/storage/backend/archive/detail/Budget.h>
#include <foundation/storage/backend/archive/detail/Container.h>
#include <foundation/storage/backend/archive/detail/StoredArchive.h>
#include <foundation/storage/backend/archive/detail/zip/Content.h>

#include <memory>

namespace foundation::storage::backend::archive::detail::zip {

/// Content that is stored without compression: read where it lies. Its checksum is checked where it is read from the
/// beginning to the end.
class PlainReader final : public ContentReader {
 public:
  /// @param archive  owns `budget`
  /// Throws `Fault` where the sizes do not agree.
  PlainReader(std::shared_ptr<const StoredArchive> archive, Budget& budget, Input input, const Content& content);

  std::size_t read(char* buffer, std::size_t count) override;
  bool isSeekable() const override { return true; }
  bool seek(std::uint64_t position) override;

 private:
  void addToChecksum(const char* bytes, std::size_t count);

  const std::shared_ptr<const StoredArchive> archive_;
  Budget& budget_;
  Input input_;
  const Content content_;
  std::uint64_t position_ = 0;
  std::uint64_t given_ = 0;  ///< what was passed over is not
  std::uint32_t crc_ = 0;
  std::uint64_t checked_ = 0;  ///< how much of the content the checksum is of
};

}  // namespace foundation::storage::backend::archive::detail::zip
