// An answer of an object store, and a key.

#include "laws/DocumentLaws.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(static_cast<const char*>(static_cast<const void*>(data)), size);
  foundation::laws::checkDocument(bytes);
  foundation::laws::checkKey(bytes);
  return 0;
}
