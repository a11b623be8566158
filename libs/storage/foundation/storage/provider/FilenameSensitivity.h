#pragma once

namespace foundation::storage::provider {

/// How a store treats upper and lower case in names.
struct FilenameSensitivity {
  bool isCaseSensitive = true;   ///< "a" and "A" are two names
  bool isCasePreserving = true;  ///< a name is listed as it was given
};

}  // namespace foundation::storage::provider
