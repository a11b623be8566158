#pragma once

#include <foundation/storage/provider/StorageIRI.h>

#include <cstdint>

namespace foundation::storage::backend::s3::detail::stream {

/// Where a seek leads to, in bytes from the beginning. Throws `ByteStreamSeekFailure` for what is no position.
/// @param origin  a value of `std::ios_base::seekdir`
std::uint64_t sought(std::int64_t offset, int origin, std::uint64_t position, std::uint64_t size,
                     const provider::StorageIRI& location);

}  // namespace foundation::storage::backend::s3::detail::stream
