#pragma once

#include <foundation/storage/events/EntryType.h>
#include <foundation/storage/events/Kind.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <boost/property_tree/ptree_fwd.hpp>

#include <cstdint>
#include <functional>

namespace foundation::storage::provider {

/// Receives change events: what happened, the watched folder, the entry concerned (the folder itself
/// for the first two kinds), the type of that entry, and details (none so far: an empty tree). Which thread calls it,
/// and what it must not do, says whoever publishes.
using ChangeCallback = std::function<void(const events::Kind&, const StorageIRI& watched, const StorageIRI& subject,
                                          const events::EntryType&, boost::property_tree::ptree)>;

/// How deep polling for changes looks.
enum class RecursiveChangePolling : std::int32_t {
  Recursive = 0,   ///< the whole subtree
  DirectOnly = 1,  ///< the folder's own entries
};

/// How deep native change events reach.
enum class RecursiveFileWatching : std::int32_t {
  Recursive = 0,   ///< the whole subtree
  DirectOnly = 1,  ///< the folder itself and its own entries
};

}  // namespace foundation::storage::provider
