#pragma once

#include <cstddef>
#include <functional>

namespace foundation::storage::backend::s3::detail {

/// Does `action` with each number below `count`, in up to `most` threads at once, of which the caller's is one. After a
/// failure none is begun any more; the first is thrown when all that were begun have ended.
void inParallel(std::size_t count, unsigned most, const std::function<void(std::size_t number)>& action);

}  // namespace foundation::storage::backend::s3::detail
