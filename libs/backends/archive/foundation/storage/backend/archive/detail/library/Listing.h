#pragma once

#include <foundation/storage/backend/archive/ArchiveFormat.h>
#include <foundation/storage/backend/archive/detail/Container.h>
#include <foundation/storage/backend/archive/detail/Limits.h>
#include <foundation/storage/backend/archive/detail/library/HardLinks.h>
#include <foundation/storage/backend/archive/detail/library/Reader.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace foundation::storage::backend::archive::detail::library {

/// Where an entry lies in a tar that is not compressed; positions in the container, in bytes.
struct Place {
  std::uint64_t header = 0;
  std::optional<std::uint64_t> content;  ///< where it lies in one piece
};

/// All that is found in an archive when its headers are read once.
struct Listing {
  Reading reading = Reading::Any;
  /// libarchive's codes, from the innermost to the outermost; none where the container has no bytes.
  std::optional<std::vector<int>> filters;
  std::vector<Entry> entries;
  std::vector<Place> places;  ///< of the entries; none where one gets to them only through those before
  SharedContent shared;
};

/// Reads all headers. Throws `Fault`, and what the container's stream throws.
Listing list(ArchiveFormat format, const std::shared_ptr<Container>& container, const Limits& limits);

}  // namespace foundation::storage::backend::archive::detail::library
