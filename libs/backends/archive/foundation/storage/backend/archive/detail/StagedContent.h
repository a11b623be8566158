#pragma once

#include <foundation/storage/backend/archive/detail/SpilledContent.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>

namespace foundation::storage::backend::archive::detail {

/// The present time, UTC.
boost::posix_time::ptime now();

/// New content of a file, which waits to be written into the archive: a little in memory, more in a temporary file;
/// there, too, once all of them together have taken much memory.
/// Any number of threads may use it. Operations throw `Fault` where the disk is full, or fails.
class StagedContent {
 public:
  StagedContent() = default;
  StagedContent(const StagedContent&) = delete;
  StagedContent& operator=(const StagedContent&) = delete;
  ~StagedContent();

  /// In bytes: what a position can express.
  static constexpr std::uint64_t maximumSize = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());

  std::uint64_t size() const;
  boost::posix_time::ptime lastModified() const;
  void setLastModified(const boost::posix_time::ptime& time);

  /// @return the number of bytes read; 0 at the end and beyond it
  std::size_t read(std::uint64_t position, char* buffer, std::size_t count) const;

  /// Writes all; a gap before it reads as zeros.
  /// @param position  none: at the end, whatever others write at the same time
  /// @return where it ended
  std::uint64_t write(std::optional<std::uint64_t> position, const char* bytes, std::size_t count);

  /// Cuts off, or fills up with zeros.
  void resize(std::uint64_t size);

  /// Counts the changes, those of the time included.
  std::uint64_t revision() const;

  /// For as long as somebody may write, by a stream for example.
  class Writing {
   public:
    explicit Writing(std::shared_ptr<StagedContent> content);
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;
    ~Writing();

    const std::shared_ptr<StagedContent>& content() const { return content_; }

   private:
    const std::shared_ptr<StagedContent> content_;
  };
  bool isBeingWritten() const;

  /// The content as it is at one moment: who would change it waits for as long as this lives. The thread that holds it
  /// must not touch the content by other ways.
  class Snapshot {
   public:
    explicit Snapshot(const StagedContent& content) : content_(content), lock_(content.mutex_) {}

    std::uint64_t size() const { return content_.size_; }
    boost::posix_time::ptime lastModified() const { return content_.lastModified_; }
    std::uint64_t revision() const { return content_.revision_; }
    std::size_t read(std::uint64_t position, char* buffer, std::size_t count) const {
      return content_.readLocked(position, buffer, count);
    }

   private:
    const StagedContent& content_;
    const std::shared_lock<std::shared_mutex> lock_;
  };

 private:
  static constexpr std::uint64_t mostInMemory = 1024 * 1024;
  static constexpr std::uint64_t mostInMemoryOfAll = 128 * mostInMemory;

  std::size_t readLocked(std::uint64_t position, char* buffer, std::size_t count) const;
  // These all need the lock, which their caller holds.
  void reserve(std::uint64_t size);
  void spill();
  void writeToFile(std::uint64_t position, const char* bytes, std::size_t count);
  void resizeMemory(std::size_t size);
  void noteChange();

  /// Guards what follows; taken after the archive's lock.
  mutable std::shared_mutex mutex_;
  std::string memory_;  ///< all of it, as long as there is no file
  std::optional<SpilledContent> file_;
  std::uint64_t size_ = 0;
  boost::posix_time::ptime lastModified_ = now();
  std::uint64_t revision_ = 0;
  std::size_t writers_ = 0;
};

}  // namespace foundation::storage::backend::archive::detail
