#pragma once

#include <cstddef>
#include <cstdint>

namespace foundation::storage::backend::archive::detail::zip {

/// What is to be read of an entry.
struct Content {
  std::size_t number;  ///< of the entry
  std::uint64_t position;
  std::uint64_t storedSize;
  std::uint64_t size;
  std::uint32_t crc;
  std::uint16_t method;
  std::uint16_t flags;
};

}  // namespace foundation::storage::backend::archive::detail::zip
