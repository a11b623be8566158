#pragma once

#include <foundation/storage/backend/archive/ArchiveFormat.h>
#include <foundation/storage/backend/archive/detail/Budget.h>
#include <foundation/storage/backend/archive/detail/Container.h>
#include <foundation/storage/backend/archive/detail/Limits.h>
#include <foundation/storage/backend/archive/detail/StoredArchive.h>
#include <foundation/storage/backend/archive/detail/library/Cursor.h>
#include <foundation/storage/backend/archive/detail/library/Listing.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace foundation::storage::backend::archive::detail::library {

/// An archive that libarchive reads: from its beginning to its end, but for tars that are not compressed. So readers
/// that are done leave where they stand to those that follow.
class LibraryArchive final : public StoredArchive {
 public:
  LibraryArchive(std::shared_ptr<Container> container, Listing listing, const Limits& limits);

  const std::vector<Entry>& entries() const override { return listing_.entries; }
  std::unique_ptr<ContentReader> open(std::size_t number) const override;

  const Listing& listing() const { return listing_; }

  /// Whether a cursor gets to an entry as soon as a new one would.
  bool isNear(const Cursor& cursor, std::size_t number) const;
  /// One that can still go to an entry, and is near; it need not be given back. Throws `Fault`, and what the
  /// container's stream throws.
  std::unique_ptr<Cursor> takeCursor(std::size_t number) const;
  /// @param cursor  nothing that it was asked for has failed
  void giveBack(std::unique_ptr<Cursor> cursor) const noexcept;

  Budget& budget() const { return budget_; }
  const Limits& limits() const { return limits_; }

 private:
  static constexpr std::size_t mostIdle = 2;

  std::unique_ptr<Cursor> takeIdle(std::size_t number) const;

  const std::shared_ptr<Container> container_;
  const Listing listing_;
  const Limits limits_;
  mutable Budget budget_;
  mutable std::mutex mutex_;  ///< guards what follows; nothing is read with it
  mutable std::vector<std::unique_ptr<Cursor>> idle_;
};

/// Reads the headers of an archive. Throws `Fault`, and what the container's stream throws.
/// @param container  where it is empty, so is the archive
std::shared_ptr<const StoredArchive> readLibraryArchive(ArchiveFormat format,
                                                        const std::shared_ptr<Container>& container,
                                                        const Limits& limits);

}  // namespace foundation::storage::backend::archive::detail::library
