#pragma once

#include <foundation/storage/backend/archive/detail/ContentReader.h>
#include <foundation/storage/backend/archive/detail/Entry.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace foundation::storage::backend::archive::detail {

/// An archive as it lies in its container: what was found when it was read. It never changes, and any number of
/// threads may use it. To be owned by `std::shared_ptr`; the readers keep it.
class StoredArchive : public std::enable_shared_from_this<StoredArchive> {
 public:
  StoredArchive() = default;
  StoredArchive(const StoredArchive&) = delete;
  StoredArchive& operator=(const StoredArchive&) = delete;
  virtual ~StoredArchive() = default;

  /// In the archive's order; their numbers are the indices.
  virtual const std::vector<Entry>& entries() const = 0;

  /// The content of a file, or of a link whose target only the content tells.
  /// @param number  of an entry that is no hard link: whoever asks follows `Entry::hardLinkTo` first
  virtual std::unique_ptr<ContentReader> open(std::size_t number) const = 0;
};

}  // namespace foundation::storage::backend::archive::detail
