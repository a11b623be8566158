#pragma once

#include <cstdint>

namespace foundation::storage::events {

/// What a change event is about.
enum class EntryType : std::int32_t { File = 0, Folder = 1 };

}  // namespace foundation::storage::events
