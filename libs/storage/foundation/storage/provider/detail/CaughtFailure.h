#pragma once

#include <string_view>

namespace foundation::storage::provider::detail {

/// Writes two records to the diagnostic log, channel "foundation::storage::provider": that something failed, and
/// the chain of exceptions being handled. To be called from a handler. Without memory for the records they are lost:
/// nobody there could deal with that.
void logCaughtFailure(std::string_view what) noexcept;

}  // namespace foundation::storage::provider::detail
