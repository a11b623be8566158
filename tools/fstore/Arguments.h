#pragma once

#include <foundation/storage/provider/StorageItem.h>

#include <string>

namespace fstore {

/// An argument of the command as a file or folder in some store.
///
/// What begins with a scheme and ':' is the text of a location; anything else is a path, made absolute
/// against the current folder. A path whose first segment has a ':' is written "./a:b". Throws what
/// parsing throws, and `Exception` with `UnsupportedOperation` for a scheme that nobody serves.
foundation::storage::provider::StorageItem itemFor(const std::string& argument);

}  // namespace fstore
