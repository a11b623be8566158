#include <foundation/storage/backend/archive/detail/library/LibraryArchive.h>

#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/library/Contents.h>

#include <algorithm>
#include <new>
#include <utility>

namespace foundation::storage::backend::archive::detail::library {

LibraryArchive::LibraryArchive(std::shared_ptr<Container> container, Listing listing, const Limits& limits)
    : container_(std::move(container)),
      listing_(std::move(listing)),
      limits_(limits),
      budget_(limits, listing_.entries.size()) {
  idle_.reserve(mostIdle + 1);
}

std::unique_ptr<ContentReader> LibraryArchive::open(std::size_t number) const {
  const auto content = contentOf(listing_.shared, number);
  if (!content)
    throw damage("it is a hard link to what is not in the archive");
  const auto& entry = listing_.entries[*content];
  if (entry.isEncrypted)
    throw Fault(provider::ErrorCode::UnsupportedOperation, "its content is encrypted");
  auto cursor = takeCursor(*content);
  cursor->goTo(*content, entry.name);
  auto archive = std::static_pointer_cast<const LibraryArchive>(shared_from_this());
  if (!listing_.places.empty() && listing_.places[*content].content)
    return std::make_unique<PlainContent>(std::move(archive), *content, std::move(cursor));
  return std::make_unique<DecodedContent>(std::move(archive), *content, std::move(cursor));
}

std::unique_ptr<Cursor> LibraryArchive::takeCursor(std::size_t number) const {
  if (auto idle = takeIdle(number))
    return idle;
  if (listing_.places.empty())
    return std::make_unique<Cursor>(0, container_, listing_.reading, 0, limits_);
  return std::make_unique<Cursor>(number, container_, Reading::PlainTar, listing_.places[number].header, limits_);
}

bool LibraryArchive::isNear(const Cursor& cursor, std::size_t number) const {
  return cursor.next() == number || (cursor.next() < number && listing_.places.empty());
}

std::unique_ptr<Cursor> LibraryArchive::takeIdle(std::size_t number) const {
  const std::scoped_lock lock(mutex_);
  auto nearest = idle_.end();
  for (auto idle = idle_.begin(); idle != idle_.end(); ++idle)
    if (isNear(**idle, number) && (nearest == idle_.end() || (*nearest)->next() < (*idle)->next()))
      nearest = idle;
  if (nearest == idle_.end())
    return nullptr;
  auto taken = std::move(*nearest);
  idle_.erase(nearest);
  return taken;
}

void LibraryArchive::giveBack(std::unique_ptr<Cursor> cursor) const noexcept {
  std::unique_ptr<Cursor> dropped;  // without the lock
  const std::scoped_lock lock(mutex_);
  idle_.push_back(std::move(cursor));  // for which there is space
  if (idle_.size() > mostIdle) {
    dropped = std::move(idle_.front());
    idle_.erase(idle_.begin());
  }
}

std::shared_ptr<const StoredArchive> readLibraryArchive(ArchiveFormat format,
                                                        const std::shared_ptr<Container>& container,
                                                        const Limits& limits) {
  Listing listing;
  if (container->open().size() > 0)
    listing = list(format, container, limits);
  return std::make_shared<LibraryArchive>(container, std::move(listing), limits);
}

}  // namespace foundation::storage::backend::archive::detail::library
