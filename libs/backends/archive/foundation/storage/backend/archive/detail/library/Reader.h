#pragma once

#include <foundation/storage/backend/archive/detail/library/Handles.h>
#include <foundation/storage/backend/archive/detail/library/Source.h>
#include <foundation/storage/backend/archive/detail/posix/NameLocale.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::archive::detail::library {

/// As what a container is read.
enum class Reading {
  Tar,       ///< from the beginning, compressed or not
  PlainTar,  ///< not compressed, from any entry's header on
  SevenZip,
  Any,  ///< all that libarchive reads by itself, except zip
};

/// Reads an archive from some place in it to its end, by libarchive: a header, what one wants of its content, the next
/// header. Starts no other program. For one thread at a time.
///
/// Operations throw `Fault`, and what the container's stream throws. After a failure nothing but the destructor
/// may be called.
class Reader {
 public:
  /// @param begin  a position in the container, in bytes; 0 but for `Reading::PlainTar`
  Reader(const std::shared_ptr<Container>& container, Reading reading, std::uint64_t begin, const Limits& limits);

  /// What becomes of content that nobody has read.
  enum class Unread {
    PassOver,  ///< where that is possible: all that listing needs
    Decode,    ///< where what follows is compressed together with it
  };

  /// Goes to the next entry, past what is left of the present one.
  /// @return its header, until the next call; null at the end
  archive_entry* next(Unread unread);

  /// Where the present header begins in what was compressed, or in the container where nothing is. At the end, where
  /// the last entry ends.
  std::uint64_t headerPosition() const;
  /// Whether what follows a header lies in the container as it is.
  bool isFiltered() const { return source_.isGzip() || archive_filter_count(handle_.get()) > 1; }
  /// libarchive's codes, from the innermost filter to the outermost.
  std::vector<int> filters() const;
  /// libarchive's code, without variants; known from the first header on.
  int format() const { return archive_format(handle_.get()) & ARCHIVE_FORMAT_BASE_MASK; }

  /// Reads what follows of the content, with zeros in its holes.
  /// @param count  not 0
  /// @return the number of bytes; 0 at the end
  std::size_t read(char* buffer, std::size_t count);

  /// Some of the content, where it lies.
  struct Block {
    std::string_view bytes;  ///< until the next call
    std::uint64_t position;  ///< in the content; not below the end of the block before
  };
  /// The next of the blocks between the holes; not to be mixed with `read` in one entry.
  /// @return false at the end
  bool readBlock(Block& block);

  Source& source() { return source_; }

 private:
  std::size_t readPresent(char* buffer, std::size_t count);
  bool isSolid() const;
  void passBy(Unread unread);
  void drain();
  void requireRatio();
  [[noreturn]] void fail() const;

  const Limits limits_;
  const std::uint64_t begin_;
  const posix::NameForm names_;
  Source source_;
  ReaderHandle handle_;  ///< goes before the source

  bool isInEntry_ = false;
  std::uint64_t size_ = 0;      ///< of the present entry, as far as one may rely on it
  std::uint64_t position_ = 0;  ///< in the present entry, of `read`
  Block block_ = {};            ///< what is left of it
  bool isAtEnd_ = false;        ///< of the present entry's blocks
  std::uint64_t produced_ = 0;  ///< by all entries
};

}  // namespace foundation::storage::backend::archive::detail::library
