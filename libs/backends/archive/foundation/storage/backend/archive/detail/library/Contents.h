#pragma once

#include <foundation/storage/backend/archive/detail/ContentReader.h>
#include <foundation/storage/backend/archive/detail/library/LibraryArchive.h>

namespace foundation::storage::backend::archive::detail::library {

/// Content that comes out of libarchive, from its beginning on.
class DecodedContent final : public ContentReader {
 public:
  /// @param cursor  at the entry
  DecodedContent(std::shared_ptr<const LibraryArchive> archive, std::size_t number, std::unique_ptr<Cursor> cursor);
  ~DecodedContent() override;

  std::size_t read(char* buffer, std::size_t count) override;

 private:
  const std::shared_ptr<const LibraryArchive> archive_;
  const std::size_t number_;
  std::unique_ptr<Cursor> cursor_;  ///< none after a failure
  std::uint64_t given_ = 0;
};

/// Content that lies in the container as it is.
class PlainContent final : public ContentReader {
 public:
  /// @param cursor  at the entry
  PlainContent(std::shared_ptr<const LibraryArchive> archive, std::size_t number, std::unique_ptr<Cursor> cursor);
  ~PlainContent() override;

  std::size_t read(char* buffer, std::size_t count) override;
  bool isSeekable() const override { return true; }
  bool seek(std::uint64_t position) override;

 private:
  const std::shared_ptr<const LibraryArchive> archive_;
  const std::size_t number_;
  const std::uint64_t begin_;  ///< in the container
  const std::uint64_t size_;
  std::unique_ptr<Cursor> cursor_;  ///< none after a failure
  std::uint64_t position_ = 0;      ///< in the content
  std::uint64_t given_ = 0;         ///< what was passed over is not
};

}  // namespace foundation::storage::backend::archive::detail::library
