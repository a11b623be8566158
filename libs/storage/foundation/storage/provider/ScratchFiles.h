#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/StorageItem.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstddef>
#include <string>
#include <string_view>

/// @file
/// Scratch files: where transactions write until they commit. A program that ends in the middle of one, by a
/// crash for instance, leaves its scratch file behind.

namespace foundation::storage::provider {

/// A name for a scratch file that nobody has used before: ".", a random UUID (RFC 4122, version 4) in lower
/// case, ".tmp.bak". It is hidden where a dot hides. Throws `boost::uuids::entropy_error` where the system
/// has no random bytes to give. Any number of threads may call it.
FOUNDATION_EXPORT std::u16string makeScratchName();

/// Whether `name` has the form of a scratch file's name; UUIDs of all versions count.
FOUNDATION_EXPORT bool isScratchName(std::u16string_view name);

/// Removes the scratch files that lie directly in `folder` and were last modified before `olderThan`:
///
///     removeScratchFiles(folder, boost::posix_time::second_clock::universal_time() - boost::gregorian::days(1));
///
/// A transaction that is still under way has a scratch file, too, which is modified only when something is
/// written to it. Choose a time before the last write of any such transaction: one whose scratch file is
/// removed fails to commit.
///
/// Links, folders and files whose time is not known are left alone. Entries that vanish meanwhile are no
/// failure. Throws what listing the folder throws; where a file cannot be examined or removed, all others are
/// tried, too, before the first failure is thrown. Any number of threads may call it.
/// @param olderThan  UTC; `not_a_date_time` removes nothing
/// @return the number of files removed by this call
FOUNDATION_EXPORT std::size_t removeScratchFiles(const StorageItem& folder, const boost::posix_time::ptime& olderThan);

}  // namespace foundation::storage::provider
