#pragma once

#include <foundation/storage/backend/archive/detail/Entry.h>

#include <boost/date_time/posix_time/ptime.hpp>
#include <archive_entry.h>

namespace foundation::storage::backend::archive::detail::library {

/// The bytes of an entry's name; none where it has no name.
std::string nameIn(archive_entry* header);

/// What a header says, but for hard links: these are files like others here.
Entry entryIn(archive_entry* header);

/// @param time  UTC
void setLastModified(archive_entry* header, const boost::posix_time::ptime& time);

}  // namespace foundation::storage::backend::archive::detail::library
