#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/StorageItem.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstddef>

namespace foundation::storage::backend::s3 {

/// Throws away the uploads to a folder, and to all below it, that were begun before `olderThan` and have come to no
/// end: a program that is killed while it writes a large file leaves one behind, which shows nowhere and takes room
/// that may have to be paid for.
///
///     abortUnfinishedUploads(folder, boost::posix_time::second_clock::universal_time() - boost::gregorian::days(7));
///
/// Choose a time before any upload that is still under way, by whatever program: it fails when its upload is gone.
/// Throws `UnsupportedOperation` where the item is in no object store, and what asking the store throws; where an
/// upload cannot be thrown away, all others are tried, too, before the first failure is thrown. Any number of threads
/// may call it.
/// @param olderThan  UTC; `not_a_date_time` throws nothing away
/// @return the number of uploads thrown away by this call
FOUNDATION_EXPORT std::size_t abortUnfinishedUploads(const provider::StorageItem& folder,
                                                     const boost::posix_time::ptime& olderThan);

}  // namespace foundation::storage::backend::s3
