#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <string>

namespace foundation::storage::provider {

/// The text of a location in UTF-8 as it may stand in a log: on one line, and with "***" for the password
/// in the user information of any location in it ("s://ann:secret@host/" becomes "s://ann:***@host/").
/// Queries are shown as they are. Any number of threads may call it.
FOUNDATION_EXPORT std::string toLogText(const StorageIRI& location);

}  // namespace foundation::storage::provider
