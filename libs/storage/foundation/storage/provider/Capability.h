#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>
#include <set>
#include <vector>

namespace foundation::storage::provider {

/// What not every store can do. Reading, plain listings and existence are asked of all.
enum class Capability : std::int32_t {
  Write,              ///< creating, writing, moving and removing; a store without it is read-only
  Append,             ///< streams that append
  RandomAccess,       ///< streams that seek and read while they write
  Wildcards,          ///< listings by pattern: * ? [a-z] [!a-z]
  RecursiveListing,   ///< listings of whole trees
  RecursiveRemoval,   ///< removing whole trees; the feature of the same name
  AtomicCopy,         ///< copies that the store makes atomic itself; the feature of the same name
  AtomicReplacement,  ///< whoever reads while a transaction commits sees the old content or the new one
  ExclusiveCreation,  ///< of several creators, movers or removers at once exactly one succeeds
  SetLastModified,    ///< to the microsecond
  SetWritable,        ///< and refusing to write what is not writable
  StorageInfo,        ///< capacity and occupied space
  LimitedSpace,       ///< a store that can be told how much it may hold
  AnyName,            ///< every name without '/' and NUL, also one that is no Unicode
  HugeFiles,          ///< beyond 4 GiB, with gaps that cost little
  ChangeEvents,       ///< telling of changes by itself; a store without is looked at
};

/// Writes it in words, as in "recursive removal"; nothing for any other number.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const Capability& capability);

/// All that there are, in their order.
FOUNDATION_EXPORT std::vector<Capability> allCapabilities();

/// What a back end says that it can do. One list serves its documents, its tests and programs that ask.
using Capabilities = std::set<Capability>;

}  // namespace foundation::storage::provider
