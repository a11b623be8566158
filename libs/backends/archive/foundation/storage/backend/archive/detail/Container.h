#pragma once

#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/StorageItem.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace foundation::storage::backend::archive::detail {

class Input;

/// The file that is an archive, wherever it is, as long as it is the same. Any number of threads may use it. To be
/// owned by `std::shared_ptr`; the inputs keep it.
class Container : public std::enable_shared_from_this<Container> {
 public:
  explicit Container(provider::StorageItem item) : item_(std::move(item)) {}

  const provider::StorageItem& item() const { return item_; }

  /// By what one can tell that the file was replaced or changed.
  struct Stamp {
    std::uint64_t size;
    boost::posix_time::ptime lastModified;

    bool operator==(const Stamp&) const = default;
  };
  /// None where there is no such file. Throws what the store throws.
  std::optional<Stamp> stamp() const;

  /// Opens the file for reading, or hands out a stream that somebody has given back: it stands somewhere, and
  /// what is near that place is the fastest to read. Throws what the store throws, and `Fault` once the file was
  /// replaced.
  Input open();

  /// To be called when the file was replaced: nothing of what was known of it holds for the new one. Streams that are
  /// open go on with the old one, as far as the store lets them.
  void retire();

 private:
  friend class Input;
  static constexpr std::size_t mostIdle = 2;

  struct Idle {
    std::unique_ptr<provider::ByteStream> stream;
    std::uint64_t position;
  };
  void giveBack(Idle idle) noexcept;

  const provider::StorageItem item_;
  std::mutex mutex_;  ///< guards what follows; the store is never called with it
  std::vector<Idle> idle_;
  bool isRetired_ = false;
};

/// A container's bytes, for one thread at a time. Gives its stream back to the container in the end.
///
/// Operations throw what the stream throws, and `Fault`.
class Input {
 public:
  Input(Input&&) noexcept = default;
  Input& operator=(Input&&) = delete;
  ~Input();

  /// Of the whole file, in bytes.
  std::uint64_t size();

  /// Reads once.
  /// @param count  not 0
  /// @return the number of bytes; 0 at the end of the file and beyond
  std::size_t readSome(std::uint64_t position, char* buffer, std::size_t count);

  /// Reads all of it. Throws `Fault` where the file ends before.
  void readAll(std::uint64_t position, char* buffer, std::size_t count);

 private:
  friend class Container;
  Input(std::shared_ptr<Container> container, Container::Idle opened);

  std::shared_ptr<Container> container_;
  std::unique_ptr<provider::ByteStream> stream_;
  std::uint64_t position_;  ///< of the stream
  bool isUsable_ = true;    ///< not after a failure, which leaves the stream nobody knows where
  std::optional<std::uint64_t> size_;
};

}  // namespace foundation::storage::backend::archive::detail
