#pragma once

#include <foundation/storage/backend/archive/detail/Container.h>
#include <foundation/storage/backend/archive/detail/Limits.h>
#include <foundation/storage/backend/archive/detail/library/Gunzip.h>

#include <archive.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

namespace foundation::storage::backend::archive::detail::library {

/// What libarchive reads: the bytes of a container, from some place in it on. Its callbacks keep what they would
/// throw, since no exception may pass through libarchive. For one thread at a time.
class Source {
 public:
  enum class Compression {
    None,      ///< or one that libarchive looks for itself
    MayBeGzip  ///< which is decoded here
  };

  /// @param begin  a position in the container, in bytes; 0 for what may be compressed
  Source(const std::shared_ptr<Container>& container, std::uint64_t begin, Compression compression,
         const Limits& limits);
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  /// Makes this what `reader`, which must not outlive it, reads.
  void attachTo(::archive* reader);

  /// Throws what a callback could not throw; to be called after each of libarchive's operations, which may have
  /// taken the failure for something else.
  void rethrow() const;

  /// How many of the container's bytes were read or passed over; not counted in a gzip, which is judged as a whole.
  std::uint64_t consumed() const { return consumed_; }
  /// Whether a gzip is decoded here, of which libarchive sees nothing.
  bool isGzip() const { return gunzip_.has_value(); }
  /// How many bytes the container has.
  std::uint64_t size() { return input_.size(); }

  /// Reads once, wherever in the container; libarchive does not notice.
  std::size_t readSome(std::uint64_t position, char* buffer, std::size_t count);

 private:
  static constexpr std::size_t firstBlock = std::size_t{16} * 1024;
  static constexpr std::size_t largestBlock = std::size_t{256} * 1024;

  static la_ssize_t onRead(::archive* reader, void* self, const void** block);
  static la_int64_t onSkip(::archive* reader, void* self, la_int64_t count);
  static la_int64_t onSeek(::archive* reader, void* self, la_int64_t offset, int origin);
  template <class Operation>
  la_int64_t guard(::archive* reader, const Operation& operation) noexcept;

  std::size_t read(::archive* reader, const void** block);
  std::size_t readGzip(const void** block);
  std::uint64_t skip(std::uint64_t count);
  std::uint64_t seek(std::int64_t offset, int origin);

  const Limits limits_;
  Input input_;
  const std::uint64_t begin_;
  std::uint64_t position_;  ///< in the container, of what libarchive reads next
  std::uint64_t consumed_ = 0;
  std::size_t blockSize_ = firstBlock;
  std::vector<char> block_;
  std::optional<Gunzip> gunzip_;
  std::uint64_t blockPosition_ = 0;  ///< in the container
  std::size_t blockFill_ = 0;        ///< how much of it was read
  std::exception_ptr failure_;
};

}  // namespace foundation::storage::backend::archive::detail::library
