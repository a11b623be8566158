// A byte for the format, and the archive.

#include "laws/ArchiveLaws.h"
#include "support/TarBuilder.h"

#include <algorithm>
#include <cstring>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

/// Puts the right checksum into what looks like a header of a tar: without it hardly any change would get further
/// than to the checksum.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
  const auto changed = LLVMFuzzerMutate(data, size, maxSize);
  constexpr std::size_t block = 512;
  for (std::size_t at = 1; seed % 4 != 0 && at + block <= changed; at += block)
    if (std::memcmp(data + at + 257, "ustar", 5) == 0) {
      std::string header(block, '\0');
      std::memcpy(header.data(), data + at, block);
      foundation::storage::testing::setChecksum(header);
      std::memcpy(data + at, header.data(), block);
    }
  return changed;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace foundation;
  using storage::testing::ArchiveFormat;
  if (size == 0)
    return 0;
  constexpr ArchiveFormat formats[] = {ArchiveFormat::Zip, ArchiveFormat::Tar, ArchiveFormat::SevenZip,
                                       ArchiveFormat::Any};
  const std::string bytes(static_cast<const char*>(static_cast<const void*>(data + 1)), size - 1);
  laws::checkArchive(formats[data[0] % std::size(formats)], bytes,
                     {{"max-entries", 1'000}, {"max-total-size", std::uint64_t{16} << 20}});
  return 0;
}
