#pragma once

#include <foundation/storage/backend/archive/detail/StoredArchive.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <memory>
#include <optional>
#include <string>

namespace foundation::storage::backend::archive::detail {

/// Reads the content of a stored entry, and makes it seek: what came last stays in memory, for short steps back;
/// longer ones begin anew. Content that is read where it lies needs neither.
class StoredStream final : public provider::ByteStream {
 public:
  /// @param number    of the entry
  /// @param size      of the content in bytes, where it is known
  /// @param location  for the texts of failures
  /// Throws what opening the entry throws.
  StoredStream(std::shared_ptr<const StoredArchive> archive, std::size_t number, std::optional<std::uint64_t> size,
               provider::StorageIRI location);

 private:
  /// How far back a step may go without beginning anew, in bytes.
  static constexpr std::size_t memorySize = 1024 * 1024;

  std::int64_t doRead(char* buffer, std::int64_t count) override;
  std::int64_t doWrite(const char* buffer, std::int64_t count) override;
  std::streampos doSeek(std::int64_t offset, int origin) override;
  void doClose() override;

  std::size_t readSome(char* buffer, std::size_t count);
  std::size_t readDirectly(char* buffer, std::size_t count);
  std::size_t decodeMore();
  void beginAnew();
  std::uint64_t size();

  std::shared_ptr<const StoredArchive> archive_;
  const std::size_t number_;
  std::optional<std::uint64_t> size_;
  const provider::StorageIRI location_;
  std::unique_ptr<ContentReader> reader_;  ///< none once it is closed
  std::uint64_t position_ = 0;
  std::uint64_t decoded_ = 0;  ///< how far the reader has come
  std::string memory_;         ///< what ends there
  bool hasFailed_ = false;     ///< then the reader stands nobody knows where
};

}  // namespace foundation::storage::backend::archive::detail
