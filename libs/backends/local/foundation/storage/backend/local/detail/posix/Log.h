#pragma once

#include <string>

namespace foundation::storage::backend::local::detail {

/// Writes an error to the diagnostic log.
void logError(const std::string& text);

/// Writes two records about the exception that is being handled, where it can be thrown no further: what was being
/// done, and, in the details, the exception.
/// @param what  a sentence
void logCaughtFailure(const char* what) noexcept;

}  // namespace foundation::storage::backend::local::detail
