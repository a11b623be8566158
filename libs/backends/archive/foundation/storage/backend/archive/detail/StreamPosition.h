#pragma once

#include <foundation/storage/provider/StorageIRI.h>

#include <cstdint>
#include <functional>

namespace foundation::storage::backend::archive::detail {

/// Where a seek leads to, in bytes from the beginning.
/// @param origin  a value of `std::ios_base::seekdir`
/// @param size    asked only where the origin is the end
/// Throws `ByteStreamSeekFailure` for what is no position.
std::int64_t sought(std::int64_t offset, int origin, std::int64_t position, const std::function<std::uint64_t()>& size,
                    const provider::StorageIRI& location);

}  // namespace foundation::storage::backend::archive::detail
