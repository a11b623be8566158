#pragma once

namespace foundation::storage::backend::local::detail {

/// Stands among the system's error numbers for what a confined provider refuses by itself: a path that leads out of
/// its folder.
constexpr int leadsOutOfRoot = 0x10000;

}  // namespace foundation::storage::backend::local::detail
