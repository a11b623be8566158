#pragma once

#include <foundation/core/Export.h>

#include <string>

namespace foundation::storage::backend::support {

/// Writes an error to the diagnostic log, on the channel "foundation::storage::provider". Any thread may call it, as
/// may `logCaughtFailure`.
/// @param text  in UTF-8
FOUNDATION_EXPORT void logError(const std::string& text);

/// Writes two records about the exception that is being handled, where it can be thrown no further: what was being
/// done, and, in the details, the exception.
/// @param what  a sentence
FOUNDATION_EXPORT void logCaughtFailure(const char* what) noexcept;

}  // namespace foundation::storage::backend::support
