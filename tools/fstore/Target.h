#pragma once

#include <foundation/storage/provider/StorageItem.h>

#include <cstddef>
#include <set>
#include <string>

namespace fstore {

/// Where `cp` and `mv` put things: under the names that their sources have in an existing folder, or at
/// exactly the location that was given.
class Target {
 public:
  /// Throws `Exception` where several sources are to go to one place that is no folder.
  Target(foundation::storage::provider::StorageItem item, const std::string& argument, std::size_t sourceCount);

  /// The place for `source`. Throws `Exception` where it has been given to another source: the second
  /// would destroy what came from the first; and where the argument, by a '/' at its end, asks for a folder,
  /// and neither is one there nor is the source one.
  foundation::storage::provider::StorageItem placeFor(const foundation::storage::provider::StorageItem& source);

 private:
  foundation::storage::provider::StorageItem item_;
  bool isFolder_;
  bool mustBeFolder_;
  std::set<foundation::storage::provider::StorageIRI> taken_;
};

/// The location without filters before its scheme: what is one place has one of these.
foundation::storage::provider::StorageIRI physicalLocation(const foundation::storage::provider::StorageIRI& location);

/// The location of the very entry, which need not exist, in the canonical form of its folder; a link is
/// not followed. Throws as `StorageItem::getCanonicalLocation` does where that folder is missing.
foundation::storage::provider::StorageIRI entryLocation(const foundation::storage::provider::StorageItem& item);

/// Where what is written at `item` ends up: its canonical location, where it exists.
foundation::storage::provider::StorageIRI writtenLocation(const foundation::storage::provider::StorageItem& item);

/// Whether `location` is `folder` or lies in it, both in canonical form.
bool contains(const foundation::storage::provider::StorageIRI& folder,
              const foundation::storage::provider::StorageIRI& location);

}  // namespace fstore
