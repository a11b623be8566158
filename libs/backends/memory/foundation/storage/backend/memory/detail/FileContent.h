#pragma once

#include <foundation/storage/backend/memory/detail/Space.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <shared_mutex>
#include <string>

namespace foundation::storage::backend::memory::detail {

/// The present time, UTC.
boost::posix_time::ptime now();

/// The bytes of one file, shared by the entry and all streams over it. What was never written reads as zeros,
/// and takes space but no memory. Any number of threads may use it.
class FileContent {
 public:
  /// In bytes: what a position can express.
  static constexpr std::uint64_t maximumSize = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());

  explicit FileContent(std::shared_ptr<Space> space);
  ~FileContent();
  FileContent(const FileContent&) = delete;
  FileContent& operator=(const FileContent&) = delete;

  std::uint64_t size() const;
  boost::posix_time::ptime lastModified() const;
  void setLastModified(const boost::posix_time::ptime& time);

  /// @return the number of bytes read; 0 at the end and beyond it
  std::size_t read(std::uint64_t position, char* buffer, std::size_t count) const;

  /// What became of a write: how much was written, and where it ended.
  struct Written {
    std::size_t count;
    std::uint64_t end;
  };

  /// Writes what the store has space for.
  /// @param position  none: at the end, whatever others write at the same time
  Written write(std::optional<std::uint64_t> position, const char* bytes, std::size_t count);

  /// Cuts off, or fills up with zeros.
  /// @return false where the store has no space for that; nothing has changed then
  bool resize(std::uint64_t size);

  /// Appends what `source` holds from this content's end on.
  /// @param most  in bytes
  /// @return the number of bytes; 0 at the source's end. Nothing where they do not fit.
  std::optional<std::uint64_t> appendFrom(const FileContent& source, std::uint64_t most);

 private:
  /// A block holds what was written of it; what lies behind that is zeros.
  using Blocks = std::map<std::uint64_t, std::string>;

  // Both without the lock.
  void put(std::uint64_t position, const char* bytes, std::size_t count);
  /// Puts what another content's blocks hold between two positions; gaps stay gaps.
  void putBlocks(const Blocks& source, std::uint64_t first, std::uint64_t last);
  void dropFrom(std::uint64_t size);

  const std::shared_ptr<Space> space_;
  /// Guards what follows. Taken after the tree's lock and before that of the space; of two, that of the older
  /// content first (a copy is appended to before anybody else knows it).
  mutable std::shared_mutex mutex_;
  Blocks blocks_;
  std::uint64_t size_ = 0;
  boost::posix_time::ptime lastModified_;
};

}  // namespace foundation::storage::backend::memory::detail
